#include "scripts/script_registry.h"

#include <algorithm>
#include <cassert>

#include "core/i18n.h"

namespace zemblar {
namespace {

std::string key_from(std::string suffix) {
  std::ranges::replace(suffix, '_', '-');
  return suffix;
}

}  // namespace

Glib::ustring ScriptCmdKind::display_name() const {
  return _(name);
}

Glib::ustring ScriptEventKind::display_name() const {
  return _(name);
}

std::map<std::string, ScriptCmdKind>& script_cmds() {
  static std::map<std::string, ScriptCmdKind> kinds;
  return kinds;
}

std::map<std::type_index, std::string>& script_cmd_types() {
  static std::map<std::type_index, std::string> keys;
  return keys;
}

std::map<std::string, ScriptEventKind>& script_events() {
  static std::map<std::string, ScriptEventKind> kinds;
  return kinds;
}

std::map<std::type_index, std::string>& script_event_types() {
  static std::map<std::type_index, std::string> keys;
  return keys;
}

void add_script_command_kind(const std::string& suffix, std::type_index type, ScriptCmdKind kind) {
  kind.key = key_from(suffix);
  const auto iter = script_cmds().find(kind.key);
  assert(iter == script_cmds().end());
  script_cmd_types()[type] = kind.key;
  script_cmds().emplace(kind.key, std::move(kind));
}

void add_script_event_kind(const std::string& suffix, std::type_index type, ScriptEventKind kind) {
  kind.key = key_from(suffix);
  const auto iter = script_events().find(kind.key);
  assert(iter == script_events().end());
  script_event_types()[type] = kind.key;
  script_events().emplace(kind.key, std::move(kind));
}

ScriptCommand* create_script_command(const std::string& key, Script& script) {
  const auto kind = script_cmds().find(key);
  return kind != script_cmds().end() && kind->second.create ? kind->second.create(script) : nullptr;
}

ScriptCommand* load_script_command(const std::string& key, Script& script,
                                   const YAML::Node& entry) {
  const auto kind = script_cmds().find(key);
  return kind != script_cmds().end() && kind->second.load ? kind->second.load(script, entry)
                                                          : nullptr;
}

ScriptEvent* create_script_event(const std::string& key) {
  const auto kind = script_events().find(key);
  return kind != script_events().end() && kind->second.create ? kind->second.create() : nullptr;
}

ScriptEvent* load_script_event(const std::string& key, const YAML::Node& entry) {
  const auto kind = script_events().find(key);
  return kind != script_events().end() && kind->second.load ? kind->second.load(entry) : nullptr;
}

const std::string& key_of(const ScriptCommand& command) {
  const auto iter = script_cmd_types().find(typeid(command));
  assert(iter != script_cmd_types().end());
  return iter->second;
}

const std::string& key_of(const ScriptEvent& event) {
  const auto iter = script_event_types().find(typeid(event));
  assert(iter != script_event_types().end());
  return iter->second;
}

}  // namespace zemblar

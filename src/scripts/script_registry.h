#pragma once

#include <map>
#include <string>
#include <typeindex>
#include <typeinfo>

#include "scripts/script_command.h"
#include "scripts/script_event.h"

namespace YAML {
class Node;
}

namespace zemblar {

/// Where a kind stands in the menus: the additions follow those that every layout file may have.
/// Within a part the kinds have the order of their keys.
enum class MenuPart { basic, additions };

/// One kind of command.
struct ScriptCmdKind {
  std::string key;
  const char* name;  ///< before translation
  ScriptCommand* (*create)(Script& script);
  /// Reads the whole entry of a layout file. Throws as Script does.
  ScriptCommand* (*load)(Script& script, const YAML::Node& entry);
  MenuPart menu_part = MenuPart::basic;

  [[nodiscard]] Glib::ustring display_name() const;
};

/// One kind of condition.
struct ScriptEventKind {
  std::string key;
  const char* name;
  ScriptEvent* (*create)();
  ScriptEvent* (*load)(const YAML::Node& entry);
  MenuPart menu_part = MenuPart::basic;

  [[nodiscard]] Glib::ustring display_name() const;
};

std::map<std::string, ScriptCmdKind>& script_cmds();
std::map<std::type_index, std::string>& script_cmd_types();
std::map<std::string, ScriptEventKind>& script_events();
std::map<std::type_index, std::string>& script_event_types();

// These return null for an unknown key. The caller owns the line.
[[nodiscard]] ScriptCommand* create_script_command(const std::string& key, Script& script);
[[nodiscard]] ScriptCommand* load_script_command(const std::string& key, Script& script,
                                                 const YAML::Node& entry);
[[nodiscard]] ScriptEvent* create_script_event(const std::string& key);
[[nodiscard]] ScriptEvent* load_script_event(const std::string& key, const YAML::Node& entry);

/// Asserts that the class is registered.
[[nodiscard]] const std::string& key_of(const ScriptCommand& command);
[[nodiscard]] const std::string& key_of(const ScriptEvent& event);

// Called before `main`, in the source file of the class. Each `_` of the suffix becomes a `-` in
// the key. Asserts that the key is new.
void add_script_command_kind(const std::string& suffix, std::type_index type, ScriptCmdKind kind);
void add_script_event_kind(const std::string& suffix, std::type_index type, ScriptEventKind kind);

template <typename Line>
void register_script_command(const std::string& suffix, const char* name,
                             MenuPart menu_part = MenuPart::basic) {
  add_script_command_kind(suffix, typeid(Line),
                          {{},
                           name,
                           [](Script& script) -> ScriptCommand* { return new Line(script); },
                           [](Script& script, const YAML::Node& entry) -> ScriptCommand* {
                             return new Line(script, entry);
                           },
                           menu_part});
}

template <typename Line>
void register_script_event(const std::string& suffix, const char* name,
                           MenuPart menu_part = MenuPart::basic) {
  add_script_event_kind(suffix, typeid(Line),
                        {{},
                         name,
                         []() -> ScriptEvent* { return new Line; },
                         [](const YAML::Node& entry) -> ScriptEvent* { return new Line(entry); },
                         menu_part});
}

}  // namespace zemblar

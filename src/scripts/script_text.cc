#include "scripts/script_text.h"

#include <yaml-cpp/yaml.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "core/document_reader.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/named_form.h"
#include "core/status.h"
#include "scripts/script.h"

namespace zemblar {
namespace {

constexpr auto name_key = "name";
constexpr std::size_t longest_text = 100'000;  // bytes
constexpr std::size_t most_lines = 1000;
constexpr std::size_t most_named = 3;

/// What this program has put on the clipboard last; pasted again, it is awake.
std::string& last_copied() {
  static std::string text;
  return text;
}

/// The entry of the script that the text has; not a map if it has none, or more than one.
YAML::Node entry_in(const Glib::ustring& text) {
  std::vector<YAML::Node> entries;
  if (text.bytes() <= longest_text) {
    read_document(text.raw(),
                  {.title = [](const YAML::Node&) {},
                   .entry = [&](const YAML::Node& entry) { entries.push_back(entry); }});
  }
  return entries.size() == 1 ? entries.front() : YAML::Node();
}

std::size_t count_lines(const YAML::Node& entry) {
  std::size_t count = 0;
  for (const auto& list : entry) count += list.second.IsSequence() ? list.second.size() : 0;
  return count;
}

/// Says what the layout does not have. False if nothing is missing.
bool say_missing(const std::set<std::string>& names) {
  if (names.empty()) return false;
  Glib::ustring all;
  std::size_t count = 0;
  for (const auto& name : names) {
    if (++count <= most_named) all += (all.empty() ? "" : ", ") + name;
  }
  if (count > most_named)
    all = Glib::ustring::compose(_("%1 and %2 more"), all, count - most_named);
  set_status(Glib::ustring::compose(_("This layout does not have: %1."), all));
  return true;
}

void say_asleep(const Script& script) {
  set_status(Glib::ustring::compose(_("“%1” sleeps; “Start Script” in its panel wakes it."),
                                    script.get_name()));
}

enum class Pasted { none, all, in_part };

/// Calls `read` for the script that the text has. If there is none, or `read` returns false or
/// throws, returns `none`, and the status line says so.
Pasted read_text(const Glib::ustring& text, const std::function<bool(const YAML::Node&)>& read) {
  auto& layout = Layout::get();
  NamedForm form;
  bool done = false;
  try {
    const auto entry = entry_in(text);
    done = entry.IsMap() && count_lines(entry) <= most_lines && read(entry);
  } catch (const YAML::Exception&) {
    done = false;
  }
  if (!done) {
    layout.drop_references();
    set_status(_("The clipboard has no lines of a script that can be read."));
    return Pasted::none;
  }
  layout.resolve();
  return say_missing(form.missing()) ? Pasted::in_part : Pasted::all;
}

/// The name, with the lowest number behind it that makes it free.
Glib::ustring free_name(const Glib::ustring& name) {
  auto free = name;
  for (unsigned n = 2; Layout::get().get_scripts().find_child(free); ++n) {
    free = Glib::ustring::compose("%1 %2", name, n);
  }
  return free;
}

}  // namespace

Glib::ustring copy_script(const Script& script, const ScriptLine* only) {
  NamedForm form;
  YAML::Emitter out;
  out << YAML::BeginMap << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq
      << YAML::LocalTag("script") << YAML::BeginMap;
  if (!only) out << YAML::Key << name_key << YAML::Value << script.get_name();
  script.save_lines(out, only);
  out << YAML::EndMap << YAML::EndSeq << YAML::EndMap;
  last_copied() = std::string(out.c_str()) + "\n";
  return last_copied();
}

ScriptLine* paste_lines(Script& script, const Glib::ustring& text, const ScriptLine* before) {
  // Text from elsewhere moves no train by itself.
  const bool is_own = !last_copied().empty() && text.raw().ends_with(last_copied());
  ScriptLine* first = nullptr;
  const auto pasted = read_text(text, [&](const YAML::Node& entry) {
    first = script.insert_lines(entry, before, is_own);
    return first != nullptr;
  });
  if (pasted == Pasted::none) return nullptr;
  if (script.sleeps() && pasted == Pasted::all) say_asleep(script);
  return first;
}

Script* paste_script(const Glib::ustring& text) {
  auto* script = Layout::get().get_scripts().add(new Script);
  const auto pasted = read_text(text, [script](const YAML::Node& entry) {
    Glib::ustring name;
    read_key(entry, name_key, name);
    if (!name.empty()) script->set_name(free_name(name));
    return script->insert_lines(entry, nullptr, false) || !name.empty();
  });
  if (pasted == Pasted::none) {
    script->destroy();
    return nullptr;
  }
  if (script->sleeps() && pasted == Pasted::all) say_asleep(*script);
  return script;
}

}  // namespace zemblar

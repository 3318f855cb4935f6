#include "scripts/script_text.h"

#include <yaml-cpp/yaml.h>

#include <functional>
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
constexpr std::size_t longest_text = 1'000'000;  // bytes

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

/// Says what the layout does not have. False if nothing is missing.
bool say_missing(const std::vector<Glib::ustring>& names) {
  if (names.empty()) return false;
  Glib::ustring all;
  for (const auto& name : names) all += (all.empty() ? "" : ", ") + name;
  set_status(Glib::ustring::compose(_("This layout does not have: %1."), all));
  return true;
}

enum class Pasted { none, all, in_part };

/// Calls `read` for the script that the text has. If there is none, or `read` returns false or
/// throws, returns `none`, and the status line says so.
Pasted read_text(const Glib::ustring& text, const std::function<bool(const YAML::Node&)>& read) {
  auto& layout = Layout::get();
  const NamedForm form;
  bool done = false;
  try {
    const auto entry = entry_in(text);
    done = entry.IsMap() && read(entry);
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
  const NamedForm form;
  YAML::Emitter out;
  out << YAML::BeginMap << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq
      << YAML::LocalTag("script") << YAML::BeginMap;
  if (!only) out << YAML::Key << name_key << YAML::Value << script.get_name();
  script.save_lines(out, only);
  out << YAML::EndMap << YAML::EndSeq << YAML::EndMap;
  return Glib::ustring(out.c_str()) + "\n";
}

ScriptLine* paste_lines(Script& script, const Glib::ustring& text, const ScriptLine* before) {
  ScriptLine* first = nullptr;
  const auto pasted = read_text(text, [&](const YAML::Node& entry) {
    first = script.insert_lines(entry, before);
    return first != nullptr;
  });
  return pasted == Pasted::none ? nullptr : first;
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
  if (script->sleeps() && pasted == Pasted::all) {
    set_status(Glib::ustring::compose(_("“%1” sleeps; “Start Script” in its panel wakes it."),
                                      script->get_name()));
  }
  return script;
}

}  // namespace zemblar

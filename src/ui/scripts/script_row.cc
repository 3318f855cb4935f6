#include "ui/scripts/script_row.h"

#include <sigc++/adaptors/track_obj.h>

#include "core/i18n.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

using Added = std::function<void(ScriptLine&)>;

/// Calls `visit` with the key and the kind of each entry of a menu, in its order.
template <typename Kinds, typename Visit>
void for_each_kind(const Kinds& kinds, const Visit& visit) {
  for (const auto part : {MenuPart::basic, MenuPart::additions}) {
    for (const auto& [key, kind] : kinds) {
      if (kind.menu_part == part) visit(key, kind);
    }
  }
}

std::vector<ScriptChoice> condition_choices(Script& script, const Added& added) {
  std::vector<ScriptChoice> choices;
  for_each_kind(script_events(), [&](const std::string& key, const ScriptEventKind& kind) {
    const auto add = [&script, added, key] {
      auto* line = create_script_event(key);
      if (!line) return;
      script.add_condition(line);
      added(*line);
    };
    choices.push_back({.text = kind.display_name(), .choose = sigc::track_obj(add, script)});
  });
  return choices;
}

std::vector<ScriptChoice> command_choices(Script& script, const Added& added) {
  std::vector<ScriptChoice> choices;
  for_each_kind(script_cmds(), [&](const std::string& key, const ScriptCmdKind& kind) {
    const auto add = [&script, added, key] {
      auto* line = create_script_command(key, script);
      if (!line) return;
      script.add_command(line);
      added(*line);
    };
    choices.push_back({.text = kind.display_name(), .choose = sigc::track_obj(add, script)});
  });
  return choices;
}

}  // namespace

bool ScriptRow::is_first_condition() const {
  return script->get_condition(0) == line;
}

Glib::ustring ScriptRow::word_text() const {
  if (type == ScriptRowType::add_condition) return _("Add Condition…");
  if (type == ScriptRowType::add_command) return _("Add Command…");
  if (is_first_condition()) return script->get_while() ? _("While") : _("When");
  const auto* event = dynamic_cast<const ScriptEvent*>(line);
  return event && event->get_or_flag() ? _("Or") : _("And");
}

Glib::ustring ScriptRow::format() const {
  if (!line) return "%0";
  const auto* event = dynamic_cast<const ScriptEvent*>(line);
  return event ? "%0 " + line->get_format() : line->get_format();
}

Glib::ustring ScriptRow::arg_text(unsigned arg) const {
  return arg == word ? word_text() : line->get_arg_text(arg);
}

Sentence ScriptRow::sentence() const {
  return {format(), [this](unsigned arg) { return arg_text(arg); }};
}

Sentence ScriptRow::sentence(unsigned replaced_arg, const Glib::ustring& replaced) const {
  return {format(), [&](unsigned arg) { return arg == replaced_arg ? replaced : arg_text(arg); }};
}

ScriptLine::ArgType ScriptRow::arg_type(unsigned arg) const {
  if (arg == word) return ScriptLine::ArgType::menu;
  return line->is_arg_editable(arg) ? line->get_arg_type(arg) : ScriptLine::ArgType::plain;
}

std::vector<unsigned> ScriptRow::editable_args() const {
  std::vector<unsigned> args;
  const auto whole = sentence();
  for (const auto& argument : whole.arguments()) {
    if (arg_type(argument.number) == ScriptLine::ArgType::plain) continue;
    args.push_back(argument.number);
  }
  return args;
}

Glib::ustring ScriptRow::asleep_because() const {
  if (is_off()) return _("Switched off: the script does as if this line were not there.");
  const auto* event = dynamic_cast<const ScriptEvent*>(line);
  return event ? event->asleep_because() : Glib::ustring();
}

bool ScriptRow::sleeps() const {
  const auto* event = dynamic_cast<const ScriptEvent*>(line);
  return event && !event->is_armed();
}

std::vector<ScriptChoice> ScriptRow::word_choices() const {
  if (is_first_condition()) {
    const auto set = [this](bool on) -> std::function<void()> {
      return sigc::track_obj([to = script, on] { to->set_while(on); }, *script);
    };
    return {{.text = _("When"), .choose = set(false)}, {.text = _("While"), .choose = set(true)}};
  }
  auto& event = dynamic_cast<ScriptEvent&>(*line);
  const auto set = [&event](bool on) -> std::function<void()> {
    return sigc::track_obj([&event, on] { event.set_or_flag(on); }, event);
  };
  return {{.text = _("And"), .choose = set(false)}, {.text = _("Or"), .choose = set(true)}};
}

Gtk::Menu* ScriptRow::make_menu(unsigned arg, const Added& added) const {
  const auto& make = ScriptUi::get().make_menu;
  if (type == ScriptRowType::add_condition) return make(condition_choices(*script, added));
  if (type == ScriptRowType::add_command) return make(command_choices(*script, added));
  return arg == word ? make(word_choices()) : line->get_menu(arg);
}

}  // namespace zemblar

#include "scripts/script_line.h"

#include <cassert>

#include "core/object.h"
#include "scripts/script_ui.h"

namespace zemblar {

void ScriptLine::save(YAML::Emitter& /*out*/) const {
  assert(false && "ScriptLine: Unimplemented Save");
}

Glib::ustring ScriptLine::get_arg_text(unsigned /*arg*/) const {
  assert(false);
}

ScriptLine::ArgType ScriptLine::get_arg_type(unsigned /*arg*/) const {
  return ArgType::plain;
}

bool ScriptLine::is_arg_editable(unsigned /*arg*/) const {
  return true;
}

void ScriptLine::get_spin_range(unsigned /*arg*/, SpinRange& /*range*/) const {
  assert(false);
}

int ScriptLine::get_variable_type(unsigned /*arg*/) const {
  assert(false);
}

void ScriptLine::set_spin_value(unsigned /*arg*/, double /*value*/) {
  assert(false);
}

Gtk::Menu* ScriptLine::get_menu(unsigned arg) {
  const auto offered = choices(arg);
  const auto& make = ScriptUi::get().make_menu;
  return make ? make(offered) : nullptr;
}

void* ScriptLine::create_editor(unsigned /*arg*/, Gtk::HBox& /*box*/) {
  assert(false);
}

void ScriptLine::finish_editor(unsigned /*arg*/, bool /*cancelled*/, void* /*state*/) {}

void ScriptLine::set_text(unsigned /*arg*/, const Glib::ustring& /*text*/) {
  assert(false);
}

std::vector<ScriptChoice> ScriptLine::choices(unsigned /*arg*/) {
  assert(false);
}

ScriptChoice ScriptLine::choice(const Glib::ustring& text, const std::function<void()>& choose,
                                Object* object) {
  sigc::slot<void> slot;
  if (object) {
    slot = sigc::track_obj(choose, *this, *object);
  } else {
    slot = sigc::track_obj(choose, *this);
  }
  return {.text = text, .choose = slot, .separator = false, .object = object};
}

ScriptUi& ScriptUi::get() {
  static ScriptUi ui;
  return ui;
}

}  // namespace zemblar

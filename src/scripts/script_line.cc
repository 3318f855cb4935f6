#include "scripts/script_line.h"

#include <cassert>

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/block_subject.h"
#include "scripts/point_subject.h"
#include "scripts/script_entry.h"

namespace zemblar {

void ScriptLine::save(YAML::Emitter& /*out*/) const {
  assert(false && "ScriptLine: Unimplemented Save");
}

// The list is the same for a line that is const; only what its functions do changes the line.
ScriptLine::Argument ScriptLine::argument(unsigned arg) const {
  auto all = const_cast<ScriptLine*>(this)->arguments();
  return arg >= 1 && arg <= all.size() ? std::move(all[arg - 1]) : Argument();
}

Glib::ustring ScriptLine::get_arg_text(unsigned arg) const {
  const auto shown = argument(arg);
  if (!shown.text) assert(false);
  return shown.text();
}

ScriptLine::ArgType ScriptLine::get_arg_type(unsigned arg) const {
  return argument(arg).type;
}

bool ScriptLine::is_arg_editable(unsigned /*arg*/) const {
  return true;
}

void ScriptLine::get_spin_range(unsigned arg, SpinRange& range) const {
  const auto edited = argument(arg);
  if (!edited.range) assert(false);
  range = edited.range();
}

int ScriptLine::get_variable_type(unsigned arg) const {
  const auto edited = argument(arg);
  if (!edited.set_text) assert(false);
  return edited.variable_type;
}

void ScriptLine::set_spin_value(unsigned arg, double value) {
  const auto edited = argument(arg);
  if (!edited.set_number) assert(false);
  edited.set_number(value);
}

Gtk::Menu* ScriptLine::get_menu(unsigned arg) {
  const auto offered = choices(arg);
  const auto& make = ScriptUi::get().make_menu;
  return make ? make(offered) : nullptr;
}

std::unique_ptr<ArgumentEditor> ScriptLine::create_editor(unsigned arg, Gtk::HBox& box) {
  const auto edited = argument(arg);
  if (!edited.create_editor) assert(false);
  return edited.create_editor(box);
}

void ScriptLine::finish_editor(unsigned arg, bool cancelled,
                               std::unique_ptr<ArgumentEditor> state) {
  const auto edited = argument(arg);
  if (edited.take_over && state && !cancelled) edited.take_over(*state);
}

void ScriptLine::set_text(unsigned arg, const Glib::ustring& text) {
  const auto edited = argument(arg);
  if (!edited.set_text) assert(false);
  edited.set_text(text);
}

std::vector<ScriptChoice> ScriptLine::choices(unsigned arg) {
  const auto edited = argument(arg);
  if (!edited.choices) assert(false);
  return edited.choices();
}

ScriptLine::Argument ScriptLine::speed_argument(unsigned arg, SpeedArg& speed) {
  return {.type = ArgType::custom,
          .text = [&speed] { return speed_text(speed); },
          .create_editor = [&speed](Gtk::HBox& box) -> std::unique_ptr<ArgumentEditor> {
            const auto& make = ScriptUi::get().make_speed_editor;
            return make ? make(box, speed) : nullptr;
          },
          .take_over =
              [this, arg, &speed](const ArgumentEditor& editor) {
                change(arg, speed, dynamic_cast<const SpeedEditor&>(editor).value());
              }};
}

void ScriptLine::announce_first_two() {
  const sigc::slot<void> tell_second =
      sigc::track_obj([this] { signal_line_changed().emit(2); }, *this);
  signal_line_changed().emit(1);
  tell_second();
}

std::vector<ScriptLine::Argument> ScriptLine::point_arguments(
    const PointSubject& subject, const std::function<void(PointBase*)>& choose_point,
    const std::function<void(PointState*)>& choose_state) {
  const auto points = [this, choose_point] {
    std::vector<PointBase*> found;
    collect(Layout::get(), found);
    std::vector<ScriptChoice> all;
    for (auto* point : found) {
      all.push_back(choice(
          point->get_name(), [choose_point, point] { choose_point(point); }, point));
    }
    return all;
  };
  const auto states = [this, &subject, choose_state] {
    std::vector<ScriptChoice> all;
    if (!subject.get_point()) return all;
    for (auto* state : subject.get_point()->states()) {
      all.push_back(choice(
          state->get_name(), [choose_state, state] { choose_state(state); }, state));
    }
    return all;
  };
  return {{.type = ArgType::menu,
           .text = [&subject] { return subject.point_text(); },
           .choices = points},
          {.type = ArgType::menu,
           .text = [&subject] { return subject.state_text(); },
           .choices = states}};
}

ScriptLine::Argument ScriptLine::block_argument(unsigned arg, BlockSubject& subject) {
  const auto choose_this = [this, arg, &subject] {
    if (subject.is_this()) return;
    signal_changing().emit();
    subject.set_this();
    signal_line_changed().emit(arg);
  };
  const auto choose = [this, arg, &subject](Block* block) {
    if (!subject.is_this() && block == subject.get_block()) return;
    signal_changing().emit();
    subject.set_block(block);
    signal_line_changed().emit(arg);
  };
  const auto choices = [this, choose_this, choose] {
    std::vector<Block*> blocks;
    collect(Layout::get(), blocks);
    std::vector<ScriptChoice> all;
    all.push_back(choice(_("This Block"), choose_this));
    if (!blocks.empty()) all.push_back({.text = {}, .choose = {}, .separator = true});
    for (auto* block : blocks) {
      all.push_back(choice(
          block->get_name(), [choose, block] { choose(block); }, block));
    }
    return all;
  };
  return {.type = ArgType::menu, .text = [&subject] { return subject.text(); }, .choices = choices};
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

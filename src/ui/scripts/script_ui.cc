// Widgets for the arguments of a script's lines.

#include "scripts/script_ui.h"

#include <gtkmm/box.h>
#include <gtkmm/menuitem.h>
#include <gtkmm/radiobutton.h>
#include <gtkmm/separatormenuitem.h>

#include <algorithm>
#include <utility>

#include "core/i18n.h"
#include "ui/toolkit/object_ref.h"
#include "ui/toolkit/spin_button.h"

namespace zemblar {
namespace {

// --- Menus ---

class ChoiceItem : public Gtk::MenuItem {
 public:
  explicit ChoiceItem(const ScriptChoice& choice)
      : Gtk::MenuItem(choice.text), choose_(choice.choose) {
    if (!choice.object) return;
    ended_ = choice.object->signal_deleted().connect([this] { set_sensitive(false); });
  }

 protected:
  void on_activate() override {
    Gtk::MenuItem::on_activate();
    // The handler may destroy the menu.
    const auto choose = choose_;
    if (get_sensitive()) choose();
  }

 private:
  std::function<void()> choose_;
  ScopedConnection ended_;
};

Gtk::Menu* make_menu(const std::vector<ScriptChoice>& choices) {
  auto menu = std::make_unique<Gtk::Menu>();
  for (const auto& choice : choices) {
    if (choice.separator) {
      menu->append(*Gtk::manage(new Gtk::SeparatorMenuItem));
    } else {
      menu->append(*Gtk::manage(new ChoiceItem(choice)));
    }
  }
  menu->show_all();
  return menu.release();
}

// --- Speeds ---

constexpr unsigned most_percent = 100;
constexpr unsigned most_km_h = 10000;

/// Edits a number with its unit. Stores the value itself, because the widgets may be destroyed
/// before it.
class SpinAndUnit : public SpeedEditor, public sigc::trackable {
 public:
  SpinAndUnit(Gtk::HBox& box, const SpeedArg& speed);

  [[nodiscard]] SpeedArg value() const override;

 private:
  void set_unit(bool km_h);
  [[nodiscard]] unsigned most() const { return value_.km_h ? most_km_h : most_percent; }

  SpeedArg value_;
  SpinButton& spin_ = *Gtk::manage(new SpinButton);
  Gtk::RadioButton& percent_ = *Gtk::manage(new Gtk::RadioButton(_("%")));
  Gtk::RadioButton& km_h_ = *Gtk::manage(new Gtk::RadioButton(_("km/h")));
};

SpinAndUnit::SpinAndUnit(Gtk::HBox& box, const SpeedArg& speed) : value_(speed) {
  auto group = percent_.get_group();
  km_h_.set_group(group);
  (speed.km_h ? km_h_ : percent_).set_active();
  spin_.set_width_chars(5);
  spin_.set_numeric();
  spin_.set_increments(1, 10);
  spin_.get_accessible()->set_name(_("Speed"));
  spin_.signal_value_changed().connect(sigc::track_obj(
      [this] { value_.speed = static_cast<unsigned>(spin_.get_value_as_int()); }, *this));
  spin_.set_range(0, most());
  spin_.set_value(speed.speed);
  // When the user chooses the unit after typing the number, the field first loses the focus to the
  // unit's button, which must not limit the number to the range of the old unit.
  spin_.signal_focus_out_event().connect(
      sigc::track_obj([this](GdkEventFocus*) { return spin_.set_range(0, most_km_h), false; },
                      *this),
      false);
  spin_.signal_focus_in_event().connect(
      sigc::track_obj([this](GdkEventFocus*) { return spin_.set_range(0, most()), false; }, *this),
      false);
  km_h_.signal_toggled().connect(sigc::track_obj([this] { set_unit(km_h_.get_active()); }, *this));
  for (Gtk::Widget* widget :
       {static_cast<Gtk::Widget*>(&spin_), static_cast<Gtk::Widget*>(&percent_),
        static_cast<Gtk::Widget*>(&km_h_)}) {
    box.pack_start(*widget, false, false);
  }
}

// Reads the typed number before limiting it to the new range.
void SpinAndUnit::set_unit(bool km_h) {
  spin_.set_range(0, most_km_h);
  spin_.update();
  value_.km_h = km_h;
  spin_.set_range(0, most());
}

SpeedArg SpinAndUnit::value() const {
  auto value = value_;
  value.speed = std::min(value.speed, most());
  return value;
}

std::unique_ptr<SpeedEditor> make_speed_editor(Gtk::HBox& box, const SpeedArg& speed) {
  return std::make_unique<SpinAndUnit>(box, speed);
}

[[maybe_unused]] const bool filled_in = [] {
  ScriptUi::get() = {.make_menu = make_menu, .make_speed_editor = make_speed_editor};
  return true;
}();

}  // namespace
}  // namespace zemblar

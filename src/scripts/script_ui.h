#pragma once

#include <glibmm/ustring.h>

#include <functional>
#include <vector>

namespace Gtk {
class HBox;
class Menu;
}  // namespace Gtk

namespace zemblar {

class Object;

/// One entry of a menu of arguments.
struct ScriptChoice {
  Glib::ustring text;
  std::function<void()> choose;  ///< empty in a separator
  bool separator = false;
  Object* object = nullptr;  ///< what it stands for, where that is an object
};

/// A speed as a line has it.
struct SpeedArg {
  unsigned speed = 0;  ///< 0 to 100 in percent, 0 to 10000 in km/h
  bool km_h = false;

  bool operator==(const SpeedArg&) const = default;
};

/// What the interface makes of the arguments of lines. It fills this in before `main`; without it
/// the functions are empty.
struct ScriptUi {
  std::function<Gtk::Menu*(const std::vector<ScriptChoice>&)> make_menu;
  /// Builds an editor in the box and returns its state.
  std::function<void*(Gtk::HBox&, const SpeedArg&)> make_speed_editor;
  /// The edited value; frees the state.
  std::function<SpeedArg(void* state)> end_speed_editor;

  static ScriptUi& get();
};

/// A menu with these choices; null without an interface.
[[nodiscard]] Gtk::Menu* menu_of(const std::vector<ScriptChoice>& choices);

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>

#include <functional>
#include <memory>
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
  Object* object = nullptr;  ///< the object that the entry chooses, or null
};

/// A speed in a line.
struct SpeedArg {
  unsigned speed = 0;  ///< 0 to 100 in percent, 0 to 10000 in km/h
  bool km_h = false;

  bool operator==(const SpeedArg&) const = default;
};

/// The state of an editor of an argument; the widgets belong to their box.
class ArgumentEditor {
 public:
  ArgumentEditor() = default;
  virtual ~ArgumentEditor() = default;
  ArgumentEditor(const ArgumentEditor&) = delete;
  ArgumentEditor& operator=(const ArgumentEditor&) = delete;
};

class SpeedEditor : public ArgumentEditor {
 public:
  /// The edited value, limited to the range of its unit.
  [[nodiscard]] virtual SpeedArg value() const = 0;
};

/// Widgets for the arguments of lines. The user interface sets these functions before `main`;
/// without one they are empty.
struct ScriptUi {
  std::function<Gtk::Menu*(const std::vector<ScriptChoice>&)> make_menu;
  /// Builds an editor in the box.
  std::function<std::unique_ptr<SpeedEditor>(Gtk::HBox&, const SpeedArg&)> make_speed_editor;

  static ScriptUi& get();
};

}  // namespace zemblar

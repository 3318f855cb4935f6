#pragma once

#include <gdkmm/rectangle.h>
#include <gtkmm/menu.h>
#include <gtkmm/window.h>

#include <functional>
#include <memory>
#include <vector>

#include "runtime/scoped_connection.h"
#include "ui/scripts/script_row.h"

namespace zemblar {

/// The menu of an argument that is being chosen. Where it would hold many objects, it has an entry
/// in their place that opens a window to search in.
///
/// Whatever is open ends with it.
class ScriptMenu {
 public:
  ~ScriptMenu();

  [[nodiscard]] bool is_open() const { return menu_ || finder_; }
  /// Below an area of the screen; `parent` is what a window stands in front of. `added` hears of a
  /// line that was chosen to be added.
  void pop_up(const ScriptRow& row, unsigned arg, const Gdk::Rectangle& area, Gtk::Window* parent,
              const std::function<void(ScriptLine&)>& added);
  /// Closes it when it belongs to the line.
  void let_go(const ScriptLine& line);
  void close();

 private:
  void search(const std::vector<ScriptChoice>& choices, Gtk::Window* parent);
  const ScriptLine* line_ = nullptr;  // whose argument is chosen; null in an entry that adds
  std::unique_ptr<Gtk::Menu> menu_;
  std::unique_ptr<Gtk::Window> finder_;
  ScopedConnection drop_menu_;
  ScopedConnection drop_finder_;
};

}  // namespace zemblar

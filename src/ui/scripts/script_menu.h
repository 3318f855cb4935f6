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

/// The open menu of an argument. Instead of many objects, it has one entry that opens an
/// ObjectFinder.
///
/// The destructor closes an open menu or window.
class ScriptMenu {
 public:
  ~ScriptMenu();

  [[nodiscard]] bool is_open() const { return menu_ || finder_; }
  /// Opens the menu below an area of the screen. `parent` is the parent of the search window.
  /// `added` is called with a line that the user has added.
  void pop_up(const ScriptRow& row, unsigned arg, const Gdk::Rectangle& area, Gtk::Window* parent,
              const std::function<void(ScriptLine&)>& added);
  /// Closes the menu if it belongs to the line.
  void let_go(const ScriptLine& line);
  void close();

 private:
  void search(const std::vector<ScriptChoice>& choices, Gtk::Window* parent);
  const ScriptLine* line_ = nullptr;  // the line of the argument; null in an entry that adds a line
  std::unique_ptr<Gtk::Menu> menu_;
  std::unique_ptr<Gtk::Window> finder_;
  ScopedConnection drop_menu_;
  ScopedConnection drop_finder_;
};

}  // namespace zemblar

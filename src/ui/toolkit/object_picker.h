#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/window.h>

#include <functional>
#include <memory>

#include "runtime/scoped_connection.h"
#include "ui/toolkit/object_menu.h"

namespace zemblar {

/// Lets the user choose an object: from a menu, or in an ObjectFinder when there are many.
///
/// The picker closes its menu or window when it is destroyed, so `chosen` may refer to the owner of
/// the picker.
class ObjectPicker {
 public:
  /// The largest number of objects for which a menu is shown.
  static constexpr unsigned few = 20;

  ~ObjectPicker();
  /// Opens below the widget, or at the pointer if `below` is null.
  void ask(Gtk::Window* window, Gtk::Widget* below, const ObjectChoices& choices,
           ObjectMenuBase::Chosen chosen, bool with_none);

 private:
  std::unique_ptr<Gtk::Menu> menu_;
  std::unique_ptr<Gtk::Window> finder_;
  ScopedConnection drop_;
};

}  // namespace zemblar

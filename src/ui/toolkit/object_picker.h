#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/window.h>

#include <functional>
#include <memory>

#include "runtime/scoped_connection.h"
#include "ui/toolkit/object_menu.h"

namespace zemblar {

/// Asks for one of the objects: by a menu, or by a window to search in when there are many.
///
/// Whatever is open ends with the picker, so that `chosen` may refer to its owner.
class ObjectPicker {
 public:
  /// Up to so many objects a menu shows at a glance.
  static constexpr unsigned few = 20;

  ~ObjectPicker();
  /// Below the widget, or at the pointer when there is none.
  void ask(Gtk::Window* window, Gtk::Widget* below, const ObjectChoices& choices,
           ObjectMenuBase::Chosen chosen, bool with_none);

 private:
  std::unique_ptr<Gtk::Menu> menu_;
  std::unique_ptr<Gtk::Window> finder_;
  ScopedConnection drop_;
};

}  // namespace zemblar

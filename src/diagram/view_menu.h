#pragma once

#include <gtkmm/menu.h>

#include <functional>
#include <memory>
#include <optional>

#include "diagram/vector.h"

namespace zemblar {

class ViewObj;

// The menus of diagram objects. They live until the next one is shown, and hold their object; once
// that is in no view any more, their items do nothing.

/// The action for an item of the object's menu.
[[nodiscard]] std::function<void()> while_drawn(ViewObj& object, std::function<void()> action);
void add_item(Gtk::Menu& menu, ViewObj& object, const Glib::ustring& label,
              const std::function<void()>& action);
/// The order, and the end of the object or of what it shows: what all of them end with.
void add_order_items(Gtk::Menu& menu, ViewObj& object);
/// For a click or a key at that time, where the MenuCall says; at the pointer without one.
void popup(std::unique_ptr<Gtk::Menu> menu, guint32 time);

/// The call for the menu of a diagram object, for as long as the menu is made.
class MenuCall {
 public:
  /// By the pointer, at a place of the view.
  explicit MenuCall(const Vector& in_view);
  /// By a key: the menu opens at a place of the screen, with its first item chosen.
  MenuCall(int x, int y);
  ~MenuCall();
  MenuCall(const MenuCall&) = delete;
  MenuCall& operator=(const MenuCall&) = delete;

  /// The place of the pointer in the view; nothing for a key.
  [[nodiscard]] static std::optional<Vector> pointed();
};

}  // namespace zemblar

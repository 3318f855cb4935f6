#pragma once

#include <gtkmm/menu.h>

#include <functional>
#include <memory>
#include <optional>

#include "diagram/vector.h"

namespace zemblar {

class ViewObj;

// The menus of diagram objects. A menu exists until the next one is shown, and holds a reference to
// its object. Once the object has been removed from its view, the items do nothing.

/// Wraps the action of a menu item, so that it does nothing when the object is in no view.
[[nodiscard]] std::function<void()> while_drawn(ViewObj& object, std::function<void()> action);
void add_item(Gtk::Menu& menu, ViewObj& object, const Glib::ustring& label,
              const std::function<void()>& action);
/// Appends the items that all menus end with: z-order, removing the object, and deleting what it
/// shows.
void add_order_items(Gtk::Menu& menu, ViewObj& object);
/// Shows the menu at the place of the present MenuCall, or at the pointer without one. `time` is
/// that of the click or key.
void popup(std::unique_ptr<Gtk::Menu> menu, guint32 time);

/// Where the menu of a diagram object is requested; exists while the menu is made.
class MenuCall {
 public:
  /// Requested by the pointer, at a place in the view.
  explicit MenuCall(const Vector& in_view);
  /// Requested by a key: the menu opens at a place on the screen, with its first item selected.
  MenuCall(int x, int y);
  ~MenuCall();
  MenuCall(const MenuCall&) = delete;
  MenuCall& operator=(const MenuCall&) = delete;

  /// The place of the pointer in the view; no value for a key.
  [[nodiscard]] static std::optional<Vector> pointed();
};

}  // namespace zemblar

#pragma once

#include <gtkmm/menu.h>

#include <functional>
#include <memory>

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
/// For a click at that time, at the pointer; for a key at its MenuPlace.
void popup(std::unique_ptr<Gtk::Menu> menu, guint32 time);

/// While it lives, a menu opens at a place of the screen, with its first item chosen.
class MenuPlace {
 public:
  MenuPlace(int x, int y);
  ~MenuPlace();
  MenuPlace(const MenuPlace&) = delete;
  MenuPlace& operator=(const MenuPlace&) = delete;
};

}  // namespace zemblar

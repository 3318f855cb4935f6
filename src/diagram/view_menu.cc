#include "diagram/view_menu.h"

#include <gtkmm/separatormenuitem.h>

#include <optional>

#include "core/i18n.h"
#include "diagram/view_object.h"

namespace zemblar {
namespace {

struct Place {
  int x;
  int y;
};
std::optional<Place> asked;  // by a key

}  // namespace

MenuPlace::MenuPlace(int x, int y) {
  asked = {x, y};
}

MenuPlace::~MenuPlace() {
  asked.reset();
}

std::function<void()> while_drawn(ViewObj& object, std::function<void()> action) {
  object.reference();
  const Glib::RefPtr<ViewObj> held(&object);
  return [held, action = std::move(action)] {
    if (held->get_view()) action();
  };
}

void add_item(Gtk::Menu& menu, ViewObj& object, const Glib::ustring& label,
              const std::function<void()>& action) {
  auto* item = Gtk::manage(new Gtk::MenuItem(label));
  item->signal_activate().connect(while_drawn(object, action));
  menu.append(*item);
}

void add_order_items(Gtk::Menu& menu, ViewObj& object) {
  if (!menu.get_children().empty()) menu.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  add_item(menu, object, _("Move To Top"), [&object] { object.move_to_top(); });
  add_item(menu, object, _("Move To Bottom"), [&object] { object.move_to_bottom(); });
  menu.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  add_item(menu, object, _("Remove From View"), [&object] { object.remove(); });
  auto* shown = object.get_object();
  if (!shown || !shown->get_deletable()) return;
  add_item(menu, object, Glib::ustring::compose(_("Delete “%1”"), shown->get_name()), [&object] {
    if (object.get_object()) object.get_object()->destroy();
  });
}

void popup(std::unique_ptr<Gtk::Menu> menu, guint32 time) {
  static std::unique_ptr<Gtk::Menu> shown;
  shown = std::move(menu);
  shown->show_all();
  if (!asked) return shown->popup(3, time);
  const auto place = [at = *asked](int& x, int& y, bool& push_in) {
    x = at.x;
    y = at.y;
    push_in = true;
  };
  shown->popup(place, 0, time);
  shown->select_first(true);
}

}  // namespace zemblar

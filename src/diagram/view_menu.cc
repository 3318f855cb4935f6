#include "diagram/view_menu.h"

#include <gtkmm/separatormenuitem.h>

#include <tuple>
#include <utility>

#include "core/i18n.h"
#include "diagram/view_object.h"

namespace zemblar {
namespace {

std::optional<Vector> in_view;  // of the present MenuCall
std::optional<std::pair<int, int>> on_screen;

}  // namespace

MenuCall::MenuCall(const Vector& place) {
  in_view = place;
}

MenuCall::MenuCall(int x, int y) {
  on_screen = {x, y};
}

MenuCall::~MenuCall() {
  in_view.reset();
  on_screen.reset();
}

std::optional<Vector> MenuCall::pointed() {
  return in_view;
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
  if (!on_screen) return shown->popup(3, time);
  const auto place = [at = *on_screen](int& x, int& y, bool& push_in) {
    std::tie(x, y) = at;
    push_in = true;
  };
  shown->popup(place, 0, time);
  shown->select_first(true);
}

}  // namespace zemblar

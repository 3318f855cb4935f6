#include "diagram/view_menu.h"

#include <gtkmm/separatormenuitem.h>

#include "core/i18n.h"
#include "diagram/view_object.h"

namespace zemblar {

void add_item(Gtk::Menu& menu, const Glib::ustring& label, const std::function<void()>& action) {
  auto* item = Gtk::manage(new Gtk::MenuItem(label));
  item->signal_activate().connect(action);
  menu.append(*item);
}

void add_order_items(Gtk::Menu& menu, ViewObj& object) {
  if (!menu.get_children().empty()) menu.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  object.reference();
  const Glib::RefPtr<ViewObj> held(&object);
  add_item(menu, _("Move To Top"), [held] { held->move_to_top(); });
  add_item(menu, _("Move To Bottom"), [held] { held->move_to_bottom(); });
  menu.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  add_item(menu, _("Remove From View"), [held] { held->remove(); });
  auto* shown = object.get_object();
  if (!shown || !shown->get_deletable()) return;
  add_item(menu, Glib::ustring::compose(_("Delete “%1”"), shown->get_name()), [held] {
    if (auto* object = held->get_object(); object && held->get_view()) object->destroy();
  });
}

void popup(std::unique_ptr<Gtk::Menu> menu, guint32 time) {
  static std::unique_ptr<Gtk::Menu> shown;
  shown = std::move(menu);
  shown->show_all();
  shown->popup(3, time);
}

}  // namespace zemblar

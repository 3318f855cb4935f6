#include "ui/canvas/editor_tools.h"

#include <atkmm/object.h>
#include <gtkmm/menu.h>
#include <gtkmm/togglebutton.h>

#include "core/i18n.h"
#include "diagram/view_class.h"

namespace zemblar {
namespace {

/// A managed item; the underscore in the name marks a mnemonic.
Gtk::MenuItem* make_item(const Glib::ustring& name, Gtk::Menu& submenu) {
  auto* item = Gtk::manage(new Gtk::MenuItem(name, true));
  item->set_submenu(submenu);
  return item;
}

/// Names the arrow beside a tool, which has no text, for screen readers.
void name_arrow(Gtk::MenuToolButton& button, const Glib::ustring& name) {
  button.set_arrow_tooltip_text(name);
  auto* box = dynamic_cast<Gtk::Container*>(button.get_child());
  if (!box) return;
  for (auto* part : box->get_children()) {
    if (dynamic_cast<Gtk::ToggleButton*>(part)) part->get_accessible()->set_name(name);
  }
}

}  // namespace

EditorTools::EditorTools(Gtk::Toolbar& toolbar) {
  for (const auto& kind : ViewClass::all()) {
    const auto& tool = kind.tool;
    const Glib::ustring add_new = _(tool.add_new);
    const Glib::ustring add_existing = _(tool.add_existing);
    auto* button = Gtk::manage(new Gtk::MenuToolButton(Gtk::StockID(kind.stock_id())));
    button->set_menu(*make_menu(kind));
    button->set_tooltip_text(tool.takes_existing ? add_existing : add_new);
    button->signal_clicked().connect([this, &kind] { choose(kind, kind.tool.takes_existing); });
    // For the overflow menu of a narrow tool bar.
    button->set_proxy_menu_item(tool.add_new, *make_item(_(tool.name), *make_menu(kind)));
    button->signal_create_menu_proxy().connect([] { return true; }, false);
    name_arrow(*button, Glib::ustring::compose("%1 / %2", add_new, add_existing));
    toolbar.append(*button);
    buttons_.push_back(button);
  }
}

void EditorTools::append_items(Gtk::MenuShell& menu) {
  for (const auto& kind : ViewClass::all()) {
    items_.push_back(make_item(_(kind.tool.name), *make_menu(kind)));
    menu.append(*items_.back());
  }
}

Gtk::Menu* EditorTools::make_menu(const ViewClass& kind) {
  auto* menu = Gtk::manage(new Gtk::Menu);
  for (const bool existing : {false, true}) {
    const auto* text = existing ? kind.tool.add_existing : kind.tool.add_new;
    auto* item = Gtk::manage(new Gtk::MenuItem(_(text)));
    item->signal_activate().connect([this, &kind, existing] { choose(kind, existing); });
    menu->append(*item);
  }
  menu->show_all();
  return menu;
}

// Makes each item insensitive, because assistive technology can use items of a menu that is itself
// insensitive.
void EditorTools::choose(const ViewClass& kind, bool existing) {
  if (buttons_.front()->get_sensitive()) signal_chosen_.emit(kind, existing);
}

void EditorTools::set_sensitive(bool sensitive) {
  for (auto* button : buttons_) button->set_sensitive(sensitive);
  for (auto* item : items_) item->set_sensitive(sensitive);
}

}  // namespace zemblar

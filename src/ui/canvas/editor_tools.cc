#include "ui/canvas/editor_tools.h"

#include <atkmm/object.h>
#include <gtkmm/menu.h>
#include <gtkmm/togglebutton.h>

#include "core/i18n.h"
#include "ui/toolkit/stock.h"

namespace zemblar {
namespace {

struct Tool {
  DiagramKind kind;
  const Gtk::StockID& icon;
  const char* name;  ///< with a mnemonic
  const char* add_new;
  const char* add_existing;
  bool takes_existing = false;  ///< by a plain click
};

const Tool tools[] = {
    {DiagramKind::point, stock::add_point, N_("_Point"), N_("Add New Point"),
     N_("Add Existing Point")},
    {DiagramKind::zone, stock::add_zone, N_("_Zone"), N_("Add New Zone (Block Section)"),
     N_("Add Existing Zone (Block Section)")},
    {DiagramKind::crossing, stock::add_crossing, N_("_Crossing"), N_("Add New Crossing"),
     N_("Add Existing Crossing")},
    {DiagramKind::scissor, stock::add_scissor, N_("Sc_issor Point"), N_("Add New Scissor Point"),
     N_("Add Existing Scissor Point")},
    {DiagramKind::signal, stock::add_signal, N_("_Signal"), N_("Add New Signal"),
     N_("Add Existing Signal")},
    {DiagramKind::label, stock::add_label, N_("_Label"), N_("Add Label for New Zone"),
     N_("Add Label for Existing Zone"), true},
};

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
  for (const auto& tool : tools) {
    auto* button = Gtk::manage(new Gtk::MenuToolButton(tool.icon));
    button->set_menu(*make_menu(tool.kind, _(tool.add_new), _(tool.add_existing)));
    button->set_tooltip_text(tool.takes_existing ? _(tool.add_existing) : _(tool.add_new));
    button->signal_clicked().connect(
        sigc::bind(sigc::mem_fun(*this, &EditorTools::choose), tool.kind, tool.takes_existing));
    // For the overflow menu of a narrow tool bar.
    button->set_proxy_menu_item(
        tool.add_new,
        *make_item(_(tool.name), *make_menu(tool.kind, _(tool.add_new), _(tool.add_existing))));
    button->signal_create_menu_proxy().connect([] { return true; }, false);
    name_arrow(*button, Glib::ustring::compose("%1 / %2", _(tool.add_new), _(tool.add_existing)));
    toolbar.append(*button);
    buttons_.push_back(button);
  }
}

void EditorTools::append_items(Gtk::MenuShell& menu) {
  for (const auto& tool : tools) {
    items_.push_back(
        make_item(_(tool.name), *make_menu(tool.kind, _(tool.add_new), _(tool.add_existing))));
    menu.append(*items_.back());
  }
}

Gtk::Menu* EditorTools::make_menu(DiagramKind kind, const Glib::ustring& add_new,
                                  const Glib::ustring& add_existing) {
  auto* menu = Gtk::manage(new Gtk::Menu);
  for (const bool existing : {false, true}) {
    auto* item = Gtk::manage(new Gtk::MenuItem(existing ? add_existing : add_new));
    item->signal_activate().connect(
        sigc::bind(sigc::mem_fun(*this, &EditorTools::choose), kind, existing));
    menu->append(*item);
  }
  menu->show_all();
  return menu;
}

// Makes each item insensitive, because assistive technology can use items of a menu that is itself
// insensitive.
void EditorTools::choose(DiagramKind kind, bool existing) {
  if (buttons_.front()->get_sensitive()) signal_chosen_.emit(kind, existing);
}

void EditorTools::set_sensitive(bool sensitive) {
  for (auto* button : buttons_) button->set_sensitive(sensitive);
  for (auto* item : items_) item->set_sensitive(sensitive);
}

}  // namespace zemblar

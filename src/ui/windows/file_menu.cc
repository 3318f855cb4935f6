#include "ui/windows/file_menu.h"

#include <gtkmm/checkmenuitem.h>
#include <gtkmm/imagemenuitem.h>
#include <gtkmm/main.h>
#include <gtkmm/menu.h>
#include <gtkmm/separatormenuitem.h>
#include <gtkmm/stock.h>
#include <gtkmm/toolbutton.h>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "ui/status/trains_standing.h"
#include "ui/throttle/lok_controller.h"
#include "ui/toolkit/stock.h"
#include "ui/windows/layout_dialogs.h"
#include "ui/windows/recovery_menu_item.h"
#include "ui/windows/track_editor.h"
#include "ui/windows/track_view.h"

namespace zemblar {
namespace {

// Gets the layout when the item is chosen, because Open replaces the layout.
void open_layout() {
  Layout::get().open_dialog();
}

void save_layout() {
  Layout::get().save();
}

void save_layout_as() {
  Layout::get().save_as();
}

void append_option(Gtk::MenuShell& menu, const char* property, const Glib::ustring& label,
                   const Glib::ustring& tooltip) {
  auto* item = Gtk::manage(new Gtk::CheckMenuItem(label, true));
  item->set_tooltip_text(tooltip);
  bind_property(GlobalOptions::get(), property, *item, "active");
  menu.append(*item);
}

void append_options(Gtk::MenuShell& menu) {
  append_option(menu, "points-protected", _("_Protect Points Under Trains"),
                _("Clicks, panels and scripts do not set a point whose block is occupied or has a "
                  "locomotive. With Shift held you set it all the same"));
  append_option(menu, "trains-go-on", _("_Trains Go On When I Quit"),
                _("Otherwise all locomotives that drive are sent a speed of 0 first"));
}

void append_separator(Gtk::MenuShell& menu) {
  menu.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
}

void append_tool_button(Gtk::Toolbar& toolbar, const Gtk::StockID& id, const Glib::ustring& tooltip,
                        const sigc::slot<void>& action) {
  auto* button = Gtk::manage(new Gtk::ToolButton(id));
  button->set_tooltip_text(tooltip);
  button->signal_clicked().connect(action);
  toolbar.append(*button);
}

}  // namespace

void new_layout() {
  when_trains_stand([] {
    GlobalOptions::get().set_layout({});
    Layout::get().new_document(true);
  });
}

void quit() {
  close_dialogs();
  Gtk::Main::quit();
}

Gtk::MenuItem* append_stock_item(Gtk::MenuShell& menu, const Gtk::StockID& id,
                                 const sigc::slot<void>& action,
                                 const Glib::RefPtr<Gtk::AccelGroup>& keys) {
  auto* item = Gtk::manage(new Gtk::ImageMenuItem(id));
  if (keys) gtk_image_menu_item_set_accel_group(item->gobj(), keys->gobj());
  if (action) item->signal_activate().connect(action);
  menu.append(*item);
  return item;
}

Gtk::Menu* append_submenu(Gtk::MenuShell& bar, const Gtk::StockID& id,
                          const Glib::RefPtr<Gtk::AccelGroup>& keys) {
  auto* menu = Gtk::manage(new Gtk::Menu);
  menu->set_accel_group(keys);
  auto* item = Gtk::manage(new Gtk::ImageMenuItem(id));
  item->set_submenu(*menu);
  bar.append(*item);
  return menu;
}

void append_file_menu(Gtk::MenuShell& bar, Gtk::Window& window) {
  const auto keys = window.get_accel_group();
  auto& menu = *append_submenu(bar, stock::file, keys);
  append_stock_item(menu, Gtk::Stock::NEW, sigc::ptr_fun(new_layout), keys);
  append_stock_item(menu, Gtk::Stock::OPEN, sigc::ptr_fun(open_layout), keys);
  append_stock_item(menu, Gtk::Stock::SAVE, sigc::ptr_fun(save_layout), keys);
  append_stock_item(menu, Gtk::Stock::SAVE_AS, sigc::ptr_fun(save_layout_as), keys);
  append_separator(menu);
  menu.append(*Gtk::manage(new RecoveryMenuItem));
  append_options(menu);
  append_separator(menu);
  append_stock_item(menu, Gtk::Stock::CLOSE, sigc::mem_fun(window, &Gtk::Window::hide), keys);
  append_stock_item(menu, Gtk::Stock::QUIT, sigc::ptr_fun(quit), keys);
}

void append_window_items(Gtk::MenuShell& menu) {
  append_stock_item(menu, stock::track_view, sigc::ptr_fun(TrackView::open));
  append_stock_item(menu, stock::track_editor, sigc::ptr_fun(TrackEditor::open));
  append_stock_item(menu, stock::throttle, [] { LokController::open(); });
}

Gtk::Menu& append_view_menu(Gtk::MenuShell& bar, Gtk::Window& window) {
  auto* menu = append_submenu(bar, stock::view, window.get_accel_group());
  append_window_items(*menu);
  return *menu;
}

void append_file_buttons(Gtk::Toolbar& toolbar) {
  append_tool_button(toolbar, Gtk::Stock::NEW, _("Start an empty layout"),
                     sigc::ptr_fun(new_layout));
  append_tool_button(toolbar, Gtk::Stock::OPEN, _("Open a layout file"),
                     sigc::ptr_fun(open_layout));
  append_tool_button(toolbar, Gtk::Stock::SAVE, _("Save the layout"), sigc::ptr_fun(save_layout));
  append_tool_button(toolbar, Gtk::Stock::SAVE_AS, _("Save the layout under another name"),
                     sigc::ptr_fun(save_layout_as));
}

}  // namespace zemblar

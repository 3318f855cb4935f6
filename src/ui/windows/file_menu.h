#pragma once

#include <gtkmm/accelgroup.h>
#include <gtkmm/menushell.h>
#include <gtkmm/toolbar.h>
#include <gtkmm/window.h>

namespace zemblar {

/// The command New: stops the trains, clears the remembered path, so that the next start begins
/// with an empty layout as well, and empties the document.
void new_layout();

/// Ends the main loop; does not touch windows, devices or files. Closes an open file chooser first,
/// because its nested loop would continue.
void quit();

/// Appends an item with the label and icon of a stock item and, if `keys` is given, its key.
Gtk::MenuItem* append_stock_item(Gtk::MenuShell& menu, const Gtk::StockID& id,
                                 const sigc::slot<void>& action,
                                 const Glib::RefPtr<Gtk::AccelGroup>& keys = {});
/// Appends a submenu with the label of a stock item, and returns the submenu.
Gtk::Menu* append_submenu(Gtk::MenuShell& bar, const Gtk::StockID& id,
                          const Glib::RefPtr<Gtk::AccelGroup>& keys);

/// The menus that all main windows share. Their items act on the layout that is current when they
/// are chosen.
void append_file_menu(Gtk::MenuShell& bar, Gtk::Window& window);
Gtk::Menu& append_view_menu(Gtk::MenuShell& bar, Gtk::Window& window);
/// Appends the items of the view menu that open windows.
void append_window_items(Gtk::MenuShell& menu);

/// Appends New, Open, Save and Save As.
void append_file_buttons(Gtk::Toolbar& toolbar);

}  // namespace zemblar

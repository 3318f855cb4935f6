#pragma once

#include <gtkmm/accelgroup.h>
#include <gtkmm/menushell.h>
#include <gtkmm/toolbar.h>
#include <gtkmm/window.h>

namespace zemblar {

/// Empties the document in the windows' way, when the trains stand: the remembered path goes first,
/// so that the next start begins afresh too.
void new_layout();

/// Ends the main loop, and nothing else: neither windows nor devices nor files are touched. A file
/// chooser that is open closes first, since its nested loop would go on.
void quit();

/// Appends an entry with the stock's label, icon and, with an accelerator group, its key.
Gtk::MenuItem* append_stock_item(Gtk::MenuShell& menu, const Gtk::StockID& id,
                                 const sigc::slot<void>& action,
                                 const Glib::RefPtr<Gtk::AccelGroup>& keys = {});
/// Appends the label of a stock item as a submenu, and returns the submenu.
Gtk::Menu* append_submenu(Gtk::MenuShell& bar, const Gtk::StockID& id,
                          const Glib::RefPtr<Gtk::AccelGroup>& keys);

/// The menus that all main windows share. Their entries act on the layout that is current when
/// they are chosen.
void append_file_menu(Gtk::MenuShell& bar, Gtk::Window& window);
Gtk::Menu& append_view_menu(Gtk::MenuShell& bar, Gtk::Window& window);
/// The entries of the view menu: what windows can be opened.
void append_window_items(Gtk::MenuShell& menu);

/// New, Open, Save and Save As.
void append_file_buttons(Gtk::Toolbar& toolbar);

}  // namespace zemblar

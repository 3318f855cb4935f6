#pragma once

#include <gtkmm/stockid.h>

/// Menu entries, tool buttons and icons that the windows share.
namespace zemblar::stock {

extern const Gtk::StockID file;
extern const Gtk::StockID view;
extern const Gtk::StockID block_control;
extern const Gtk::StockID track_view;
extern const Gtk::StockID track_editor;
extern const Gtk::StockID throttle;
extern const Gtk::StockID track_power_off;
extern const Gtk::StockID track_power_on;
extern const Gtk::StockID disconnect;  ///< icon only
extern const Gtk::StockID connect;     ///< icon only
extern const Gtk::StockID no_power;    ///< icon only: a station in service with its track power off
extern const Gtk::StockID locomotive;  ///< icon only

/// Registers labels and icons with the toolkit. Call once, after the toolkit has set the locale.
void register_items();

}  // namespace zemblar::stock

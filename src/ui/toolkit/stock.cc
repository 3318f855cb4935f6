#include "ui/toolkit/stock.h"

#include <gtkmm/iconfactory.h>
#include <gtkmm/iconset.h>
#include <gtkmm/iconsource.h>
#include <gtkmm/stock.h>
#include <gtkmm/stockitem.h>

#include "core/i18n.h"
#include "diagram/view_class.h"

namespace zemblar::stock {

const Gtk::StockID file("file");
const Gtk::StockID view("view");
const Gtk::StockID block_control("block-control");
const Gtk::StockID track_view("track-view");
const Gtk::StockID track_editor("track-editor");
const Gtk::StockID throttle("throttle");
const Gtk::StockID track_power_off("track-power-off");
const Gtk::StockID track_power_on("track-power-on");
const Gtk::StockID disconnect("disconnect");
const Gtk::StockID connect("connect");
const Gtk::StockID no_power("no-power");
const Gtk::StockID locomotive("locomotive");

namespace {

struct Item {
  const Gtk::StockID& id;
  const char* label;  ///< null: an icon only
  const char* icon;   ///< null: no icon
};

const Item items[] = {
    {file, N_("_File"), nullptr},
    {view, N_("_View"), nullptr},
    {block_control, N_("_Block Control"), nullptr},
    {track_view, N_("Track _View"), nullptr},
    {track_editor, N_("Track _Editor"), nullptr},
    {throttle, N_("_Throttle"), nullptr},
    {track_power_off, N_("Track Power Off"), "orvane-red-dot"},
    {track_power_on, N_("Track Power On"), "orvane-green-dot"},
    {disconnect, nullptr, "orvane-red-dot"},
    {connect, nullptr, "orvane-green-dot"},
    {no_power, nullptr, "zemblar-no-power"},
    {locomotive, nullptr, "zemblar"},
};

Gtk::IconSet icon_set(const char* icon) {
  Gtk::IconSource source;
  source.set_icon_name(icon);
  Gtk::IconSet set;
  set.add_source(source);
  return set;
}

}  // namespace

void register_items() {
  const auto factory = Gtk::IconFactory::create();
  const auto add = [&factory](const Gtk::StockID& id, const char* label, const char* icon) {
    if (label) Gtk::Stock::add(Gtk::StockItem(id, _(label), Gdk::ModifierType(0), 0, ""));
    if (icon) factory->add(id, icon_set(icon));
  };
  for (const auto& item : items) add(item.id, item.label, item.icon);
  for (const auto& kind : ViewClass::all()) {
    add(Gtk::StockID(kind.stock_id()), kind.tool.label, kind.tool.icon);
  }
  factory->add_default();
}

}  // namespace zemblar::stock

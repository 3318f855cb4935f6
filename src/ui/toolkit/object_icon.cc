#include "ui/toolkit/object_icon.h"

#include <gtkmm/stock.h>

#include <map>
#include <string>

#include "core/toplevel.h"
#include "devices/device.h"
#include "devices/track_power.h"
#include "diagram/view_class.h"
#include "scripts/script.h"
#include "ui/toolkit/stock.h"

namespace zemblar {
namespace {

/// Icons by GObject type name, because the classes are defined in many folders. Classes that
/// diagrams show have the icon of the tool.
const std::map<std::string, Gtk::StockID>& icons_by_class() {
  static const std::map<std::string, Gtk::StockID> icons = {
      {"Layout", Gtk::Stock::HOME},
      {"View", Gtk::Stock::PAGE_SETUP},
      {"Lok", stock::locomotive},
      {"LokGroup", Gtk::Stock::DIRECTORY},
      {"LokHolder", Gtk::Stock::JUMP_TO},
      {"Function", Gtk::Stock::EXECUTE},
      {"Script", Gtk::Stock::MEDIA_PLAY},
      {"PointState", Gtk::Stock::GO_FORWARD},
      {"SignalState", Gtk::Stock::GO_FORWARD},
  };
  return icons;
}

}  // namespace

Gtk::StockID object_icon(const Object& object) {
  if (const auto* device = dynamic_cast<const Device*>(&object)) {
    if (!device->active()) return stock::disconnect;
    return switches_power(*device) && !device->track_power() ? stock::no_power : stock::connect;
  }
  const auto* script = dynamic_cast<const Script*>(&object);
  if (script && script->num_runs() != 0) return stock::connect;
  if (dynamic_cast<const Toplevel*>(&object)) return Gtk::Stock::DIRECTORY;
  for (const auto& kind : ViewClass::all()) {
    if (kind.shows(object)) return Gtk::StockID(kind.stock_id());
  }
  std::string name = G_OBJECT_TYPE_NAME(object.gobj());
  constexpr std::string_view prefix = "gtkmm__CustomObject_";
  if (name.starts_with(prefix)) name.erase(0, prefix.size());
  const auto& icons = icons_by_class();
  const auto found = icons.find(name);
  return found == icons.end() ? Gtk::StockID(Gtk::Stock::FILE) : found->second;
}

}  // namespace zemblar

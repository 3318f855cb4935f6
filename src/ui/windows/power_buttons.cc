#include "ui/windows/power_buttons.h"

#include "core/i18n.h"
#include "devices/device.h"
#include "devices/track_power.h"
#include "ui/toolkit/stock.h"
#include "ui/windows/file_menu.h"

namespace zemblar {
PowerButtons::PowerButtons(Gtk::Toolbar& toolbar)
    : on_(stock::track_power_on),
      off_(stock::track_power_off),
      follower_([this](Layout& layout, auto& connections) { attach(layout, connections); }) {
  on_.set_tooltip_text(_("Switch the track power of every command station on"));
  off_.set_tooltip_text(_("Switch the track power of every command station off"));
  on_.signal_clicked().connect([] { Layout::get().set_track_power(true); });
  off_.signal_clicked().connect([] { Layout::get().set_track_power(false); });
  toolbar.append(on_);
  toolbar.append(off_);
}

void PowerButtons::append_items(Gtk::MenuShell& menu) {
  for (const bool on : {true, false}) {
    items_.push_back(append_stock_item(menu, on ? stock::track_power_on : stock::track_power_off,
                                       [on] { Layout::get().set_track_power(on); }));
  }
  refresh();
}

void PowerButtons::attach(Layout& layout, LayoutFollower::Connections& connections) {
  for_each_device(layout.get_devices(), [this](Device& device) { watch(device); });
  connections.emplace_back(layout.signal_object_added().connect([this](Object* object) {
    if (auto* device = dynamic_cast<Device*>(object)) watch(*device);
  }));
  connections.emplace_back(layout.signal_object_removed().connect([this](Object* object) {
    if (dynamic_cast<Device*>(object)) refresh();
  }));
  refresh();
}

void PowerButtons::watch(Device& device) {
  device.property_active().signal_changed().connect(sigc::mem_fun(*this, &PowerButtons::refresh));
  refresh();
}

void PowerButtons::refresh() {
  auto& layout = Layout::get();
  const bool any = !layout.is_emptying() && !power_stations(layout.get_devices()).empty();
  on_.set_sensitive(any);
  off_.set_sensitive(any);
  for (auto* item : items_) item->set_sensitive(any);
}

}  // namespace zemblar

#include "ui/power_buttons.h"

#include <algorithm>

#include "core/i18n.h"
#include "devices/device.h"
#include "ui/file_menu.h"
#include "ui/stock.h"

namespace zemblar {
namespace {

constexpr int full_support = 2;

bool switches_power(const Object& parent, const Object* leaving) {
  return std::ranges::any_of(parent.begin(), parent.end(), [=](const Object* child) {
    if (child == leaving || child->is_deleting()) return false;
    const auto* device = dynamic_cast<const Device*>(child);
    return (device && device->active() && device->supports("DCC/Power") == full_support) ||
           switches_power(*child, leaving);
  });
}

}  // namespace

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
  refresh(nullptr);
}

void PowerButtons::attach(Layout& layout, LayoutFollower::Connections& connections) {
  watch_devices(layout.get_devices());
  connections.emplace_back(layout.signal_object_added().connect([this](Object* object) {
    if (auto* device = dynamic_cast<Device*>(object)) watch(*device);
  }));
  connections.emplace_back(layout.signal_object_removed().connect([this](Object* object) {
    if (dynamic_cast<Device*>(object)) refresh(object);
  }));
  refresh(nullptr);
}

void PowerButtons::watch_devices(const Object& parent) {
  for (auto* child : parent) {
    if (auto* device = dynamic_cast<Device*>(child)) watch(*device);
    watch_devices(*child);
  }
}

void PowerButtons::watch(Device& device) {
  device.property_active().signal_changed().connect(
      sigc::bind(sigc::mem_fun(*this, &PowerButtons::refresh), nullptr));
  refresh(nullptr);
}

void PowerButtons::refresh(const Object* leaving) {
  auto& layout = Layout::get();
  const bool any = !layout.is_emptying() && switches_power(layout.get_devices(), leaving);
  on_.set_sensitive(any);
  off_.set_sensitive(any);
  for (auto* item : items_) item->set_sensitive(any);
}

}  // namespace zemblar

#include "core/layout.h"

#include <glibmm/main.h>

#include <algorithm>
#include <cassert>

#include "core/collections.h"
#include "core/document_keeper.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/status.h"
#include "devices/default_device.h"
#include "devices/port/hw_list.h"
#include "devices/track_power.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto pulse_period = 500ms;

Layout* current = nullptr;

}  // namespace

Layout& Layout::get(Layout* replace) {
  if (replace) current = replace;
  if (!current) current = new Layout;
  return *current;
}

bool Layout::exists() {
  return current != nullptr;
}

sigc::signal<void>& Layout::signal_replaced() {
  static sigc::signal<void> signal;
  return signal;
}

Layout::Dialogs& Layout::dialogs() {
  static Dialogs hooks;
  return hooks;
}

Layout::Layout()
    : Glib::ObjectBase("Layout"),
      Object(_("Layout")),
      default_device_(new DefaultDevice),
      all_blocks_(new MemberSet("All Blocks", MemberKind::block, signal_object_added_)),
      all_points_(new MemberSet("All Points", MemberKind::point, signal_object_added_)),
      all_loks_(new AllLoks) {
  register_property<bool>(this, "block-control", &Layout::get_block_control,
                          &Layout::set_block_control);
  register_property<bool>(this, "track-power", &Layout::get_track_power, &Layout::set_track_power);
  register_property<bool>(this, "simulating", &Layout::get_simulating, &Layout::set_simulating);
  pulse_ = Timeout::every(pulse_period, [this] {
    signal_pulse_.emit();
    return true;
  });
  signal_object_added_.connect(sigc::mem_fun(*this, &Layout::track_device));
  signal_object_removed_.connect([this](Object* object) {
    written_.forget(object);
    if (dynamic_cast<Device*>(object)) recompute_track_power();
  });
}

Layout::~Layout() {
  toplevels_.fill(nullptr);  // already destroyed, but the default device asks for them as it ends
  for (Object* part : {static_cast<Object*>(all_loks_), static_cast<Object*>(all_points_),
                       static_cast<Object*>(all_blocks_), static_cast<Object*>(default_device_)}) {
    part->destroy();
  }
  if (current == this) current = nullptr;
}

void Layout::new_document(bool with_view) {
  auto* keeper = with_view ? DocumentKeeper::get() : nullptr;
  if (keeper) keeper->before_drop();
  replace_name(_("New Layout"));
  if (with_view) file_.reset();
  emptying_ = true;
  destroy_children();
  emptying_ = false;
  auto put = [this](Toplevel* toplevel) {
    toplevels_[static_cast<std::size_t>(toplevel->section())] = toplevel;
    add(toplevel);
  };
  put(new ViewToplevel);
  put(new LokToplevel);
  put(new PointToplevel);
  put(new BlockToplevel);
  put(new DeviceToplevel);
  put(new ScriptToplevel);
  const auto* view = find_document_class("!view");
  if (with_view && view) get_views().add(view->make());
  // Ports of the destroyed devices are free now: offer them again.
  if (with_view) Glib::signal_idle().connect_once([] { HWList::get().refresh(); });
  if (keeper) keeper->document_begun();
}

Toplevel& Layout::get_toplevel(Section section) const {
  auto* toplevel = toplevels_[static_cast<std::size_t>(section)];
  assert(toplevel && "The Layout has no document yet");
  return *toplevel;
}

void Layout::set_block_control(bool on) {
  if (on == block_control_) return;
  block_control_ = on;
  notify_property(*this, "block-control");
}

void Layout::set_simulating(bool on) {
  if (on == simulating_) return;
  simulating_ = on;
  notify_property(*this, "simulating");
}

// The property may already have the value while a single device differs, so each device is
// switched.
void Layout::set_track_power(bool on) {
  clear_status();
  for_each_device(get_devices(), [on](Device& device) {
    if (switches_power(device)) device.set_track_power(on);
  });
}

void Layout::track_device(Object* object) {
  auto* device = dynamic_cast<Device*>(object);
  if (!device || !switches_power(*device)) return;
  device->property_track_power().signal_changed().connect(
      sigc::mem_fun(*this, &Layout::recompute_track_power));
  recompute_track_power();
}

void Layout::recompute_track_power() {
  bool any = false;
  bool all = true;
  if (auto* devices = toplevels_[static_cast<std::size_t>(Section::devices)]) {
    for_each_device(*devices, [&](Device& device) {
      if (!switches_power(device)) return;
      any = true;
      all = all && device.track_power();
    });
  }
  const bool on = any && all;
  if (on == track_power_) return;
  track_power_ = on;
  notify_property(*this, "track-power");
}

void Layout::on_child_removing(Object* child) {
  std::ranges::replace(toplevels_, dynamic_cast<Toplevel*>(child), static_cast<Toplevel*>(nullptr));
}

// Runs one iteration of the main loop, so that queued completions of devices run before the devices
// end.
void Layout::on_deleting() {
  emptying_ = true;
  if (auto* devices = toplevels_[static_cast<std::size_t>(Section::devices)]) {
    for_each_device(*devices, [](Device& device) { device.go_out_of_service(); });
  }
  Glib::MainContext::get_default()->iteration(false);
  pulse_.cancel();
}

}  // namespace zemblar

#include "core/layout.h"

#include <glibmm/main.h>

#include <algorithm>
#include <cassert>

#include "core/collections.h"
#include "core/document_keeper.h"
#include "core/i18n.h"
#include "core/layout_devices.h"
#include "core/property.h"
#include "core/status.h"

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

sigc::signal<void>& Layout::signal_emptied() {
  static sigc::signal<void> signal;
  return signal;
}

LayoutDevices::Make& LayoutDevices::make() {
  static Make filled;
  return filled;
}

Layout::Dialogs& Layout::dialogs() {
  static Dialogs hooks;
  return hooks;
}

Layout::Layout()
    : Glib::ObjectBase("Layout"),
      Object(_("Layout")),
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
  layout_devices_ = LayoutDevices::make()(*this);
  signal_object_removed_.connect([this](Object* object) { written_.forget(object); });
}

Layout::~Layout() {
  toplevels_.fill(nullptr);  // already destroyed, but the default device asks for them as it ends
  for (Object* part : {static_cast<Object*>(all_loks_), static_cast<Object*>(all_points_),
                       static_cast<Object*>(all_blocks_)}) {
    part->destroy();
  }
  layout_devices_->end();
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
  if (with_view) signal_emptied().emit();
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

DefaultDevice& Layout::get_default_device() const {
  return layout_devices_->default_device();
}

bool Layout::get_track_power() const {
  return layout_devices_->track_power();
}

void Layout::set_track_power(bool on) {
  clear_status();
  layout_devices_->set_track_power(on);
}

void Layout::on_child_removing(Object* child) {
  std::ranges::replace(toplevels_, dynamic_cast<Toplevel*>(child), static_cast<Toplevel*>(nullptr));
}

// Runs one iteration of the main loop, so that queued completions of devices run before the devices
// end.
void Layout::on_deleting() {
  emptying_ = true;
  layout_devices_->go_out_of_service();
  Glib::MainContext::get_default()->iteration(false);
  pulse_.cancel();
}

}  // namespace zemblar

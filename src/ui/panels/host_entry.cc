#include "ui/panels/host_entry.h"

#include "devices/port/network_station.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto pause = 1s;

}  // namespace

HostEntry::HostEntry(NetworkStation& station) : station_(&station) {
  changed_ = station.property_host().signal_changed().connect([this] { follow(); });
  follow();
}

void HostEntry::follow() {
  if (!station_) return;
  const UpdateGuard scope(updating_);
  pause_.cancel();
  show_text(*this, station_->get_host());
}

// The signal of Return makes a step of what happens, to be undone.
void HostEntry::on_changed() {
  Gtk::Entry::on_changed();
  if (!updating_) pause_ = Timeout::once(pause, [this] { activate(); });
}

void HostEntry::on_activate() {
  finish();
  Gtk::Entry::on_activate();
}

bool HostEntry::on_focus_out_event(GdkEventFocus* event) {
  finish();
  return Gtk::Entry::on_focus_out_event(event);
}

void HostEntry::finish() {
  pause_.cancel();
  if (station_ && !station_->is_deleting()) station_->set_host(get_text());
}

}  // namespace zemblar

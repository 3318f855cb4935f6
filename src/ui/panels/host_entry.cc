#include "ui/panels/host_entry.h"

#include "devices/ecos/device_ecos.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto pause = 1s;

}  // namespace

HostEntry::HostEntry(ECoS& ecos) : ecos_(&ecos) {
  changed_ = ecos.property_host().signal_changed().connect([this] { follow(); });
  follow();
}

void HostEntry::follow() {
  if (!ecos_) return;
  const UpdateGuard scope(updating_);
  pause_.cancel();
  show_text(*this, ecos_->get_host());
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
  if (ecos_ && !ecos_->is_deleting()) ecos_->set_host(get_text());
}

}  // namespace zemblar

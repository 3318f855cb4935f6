#pragma once

#include <gtkmm/entry.h>

#include "runtime/timer.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class NetworkStation;

/// An entry for the address of a station. What is typed counts after Return, when the entry is
/// left, and a second after the last key: a part of an address may be that of another station.
class HostEntry : public Gtk::Entry {
 public:
  explicit HostEntry(NetworkStation& station);

  /// As on Return: what is there now was meant.
  void finish();

 protected:
  void on_changed() override;
  void on_activate() override;
  bool on_focus_out_event(GdkEventFocus* event) override;

 private:
  void follow();

  bool updating_ = false;
  ObjectRef<NetworkStation> station_;
  Timeout pause_;
  ScopedConnection changed_;
};

}  // namespace zemblar

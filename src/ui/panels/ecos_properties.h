#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/label.h>
#include <gtkmm/table.h>

#include "core/panel_factory.h"
#include "runtime/scoped_connection.h"
#include "ui/panels/host_entry.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class NetworkStation;

/// The panel of an ECoS, and of any command station that is reached over TCP.
class ECoSProperties : public Gtk::Table {
 public:
  ECoSProperties(NetworkStation& station, const Glib::RefPtr<Gtk::SizeGroup>& labels);

 private:
  void follow_link();

  ObjectRef<NetworkStation> station_;
  NameEntry name_;
  HostEntry host_;
  Gtk::Label in_use_;
  Gtk::HBox service_;
  Gtk::CheckButton use_as_default_;
  Gtk::Button reconnect_;
  ScopedConnection link_changed_;
  ScopedConnection host_changed_;
};

}  // namespace zemblar

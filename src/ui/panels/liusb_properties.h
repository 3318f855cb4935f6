#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>

#include "core/panel_factory.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class LIUSB;

/// The panel of a LI-USB.
class LIUSBProperties : public Gtk::VBox {
 public:
  LIUSBProperties(LIUSB& liusb, const Glib::RefPtr<Gtk::SizeGroup>& labels);

 private:
  NameEntry name_;
  Gtk::CheckButton enable_default_;
};

}  // namespace zemblar

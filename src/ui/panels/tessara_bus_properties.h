#pragma once

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class DeviceTessaraBus;

/// The panel of a Tessara bus.
class DeviceTessaraBusProperties : public Form {
 public:
  DeviceTessaraBusProperties(DeviceTessaraBus& bus, const Labels& labels);

 private:
  void scan();
  void follow_service();

  ObjectRef<DeviceTessaraBus> bus_;
  NameEntry name_;
  Gtk::Label serial_;
  Gtk::Button scan_;
};

}  // namespace zemblar

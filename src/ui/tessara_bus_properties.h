#pragma once

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "ui/form.h"
#include "ui/name_entry.h"
#include "ui/object_ref.h"

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

#pragma once

#include <gtkmm/button.h>
#include <gtkmm/menu.h>

#include "ui/toolkit/form.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class DeviceToplevel;
class Object;
struct DocumentClass;

/// The panel of all devices: a button with a menu of the devices that the user can make. Other
/// devices appear when their hardware is plugged in.
class DTProps : public Form {
 public:
  DTProps(DeviceToplevel& toplevel, const Labels& labels);

  [[nodiscard]] Gtk::Menu& menu() { return menu_; }

 private:
  void add_button();
  void add_item(const DocumentClass& device_class);
  void add_device(Object* (*make)());

  ObjectRef<DeviceToplevel> toplevel_;
  Gtk::Button button_;
  Gtk::Menu menu_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/toolbar.h>
#include <gtkmm/toolbutton.h>

#include "ui/layout_follower.h"

namespace zemblar {

/// "Track Power On" and "Track Power Off" for all devices that can switch it. Both are insensitive
/// while there is no such device.
class PowerButtons {
 public:
  explicit PowerButtons(Gtk::Toolbar& toolbar);

 private:
  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void refresh(const Object* leaving);

  Gtk::ToolButton on_;
  Gtk::ToolButton off_;
  LayoutFollower follower_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/toolbar.h>
#include <gtkmm/toolbutton.h>

#include <vector>

#include "ui/toolkit/layout_follower.h"

namespace zemblar {

class Device;

/// "Track Power On" and "Track Power Off" for all devices that can switch track power. Both are
/// insensitive while no such device is in service.
class PowerButtons : public sigc::trackable {
 public:
  explicit PowerButtons(Gtk::Toolbar& toolbar);

  /// Appends menu items that do the same, for use by keys.
  void append_items(Gtk::MenuShell& menu);

 private:
  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void watch(Device& device);
  void refresh();

  Gtk::ToolButton on_;
  Gtk::ToolButton off_;
  std::vector<Gtk::MenuItem*> items_;
  LayoutFollower follower_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/checkmenuitem.h>

#include "ui/windows/layout_window.h"
#include "ui/windows/power_buttons.h"
#include "ui/windows/view_pages.h"

namespace zemblar {

/// The operator's window: one page for each view that is not hidden, and the controls for track
/// power and block control. Nothing can be edited here.
class TrackView : public LayoutWindow {
 public:
  /// Opens another window, which deletes itself when closed.
  static void open();

 private:
  TrackView();
  void append_block_control_menu();
  void append_editor_button();

  Gtk::CheckMenuItem block_control_;
  LayoutFollower block_control_follower_;
  PowerButtons power_;
  ViewPages pages_;
};

}  // namespace zemblar

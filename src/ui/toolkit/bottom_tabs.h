#pragma once

#include <gtkmm/notebook.h>

namespace zemblar {

/// A notebook with its tabs below the pages. Shift+Tab goes from the tabs to the last field of the
/// page, so that Shift+Tab visits the fields in the reverse order of Tab.
class BottomTabs : public Gtk::Notebook {
 public:
  BottomTabs() { set_tab_pos(Gtk::POS_BOTTOM); }

 protected:
  bool on_focus(Gtk::DirectionType direction) override;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/statusbar.h>

#include "runtime/timer.h"

namespace zemblar {

/// Shows the text of the one status line; all Statusbars show the same. The tooltip has the whole
/// text, which may be cut off in a narrow window, and its time. After a minute the text becomes
/// grey, unless it is about a lasting trouble.
class Statusbar : public Gtk::Statusbar {
 public:
  Statusbar();

 private:
  void refresh();
  void show_text();
  void set_grey(bool grey);

  Timeout ageing_;
};

}  // namespace zemblar

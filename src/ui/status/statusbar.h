#pragma once

#include <gtkmm/statusbar.h>

#include "runtime/timer.h"

namespace zemblar {

/// Shows the one status line, as every other Statusbar does. Its tooltip has the whole text, which
/// a narrow window cuts off, with its time. A text that has stood for a minute is shown grey,
/// unless it tells of a trouble that lasts.
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

#pragma once

#include <gtkmm/statusbar.h>

namespace zemblar {

/// Shows the one status line, as every other Statusbar does. Its tooltip has the whole text, which
/// a narrow window cuts off, with its time.
class Statusbar : public Gtk::Statusbar {
 public:
  Statusbar();

 private:
  void refresh();
  void show_text();
};

}  // namespace zemblar

#pragma once

#include <gtkmm/statusbar.h>

namespace zemblar {

/// Shows the one status line, as every other Statusbar does.
class Statusbar : public Gtk::Statusbar {
 public:
  Statusbar();

 private:
  void refresh();
};

}  // namespace zemblar

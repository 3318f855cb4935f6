#pragma once

#include <gtkmm/image.h>
#include <gtkmm/window.h>

#include "runtime/timer.h"

namespace zemblar {

/// The picture at the start: fades in for one second, stays for three, fades out and deletes
/// itself. Make it with `new`.
class SplashScreen : public Gtk::Window {
 public:
  SplashScreen();

 private:
  bool brighten();
  bool darken();
  void show_opacity();

  double opacity_ = 0;
  Gtk::Image image_;
  Timeout step_;
};

}  // namespace zemblar

#include "ui/windows/splash_screen.h"

#include "ui/toolkit/picture.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto tick = 10ms;
constexpr auto pause = 3s;
constexpr double opacity_step = 0.01;

}  // namespace

SplashScreen::SplashScreen()
    : Gtk::Window(Gtk::WINDOW_TOPLEVEL), image_(load_resource("icons/zemblar-splash.svg")) {
  set_title("Zemblar");
  set_decorated(false);
  set_keep_above(true);
  set_skip_taskbar_hint(true);
  set_position(Gtk::WIN_POS_CENTER_ALWAYS);
  set_type_hint(Gdk::WINDOW_TYPE_HINT_SPLASHSCREEN);
  set_accept_focus(false);  // does not take the keyboard from another program
  show_opacity();
  add(image_);
  show_all();
  step_ = Timeout::every(tick, [this] { return brighten(); });
}

void SplashScreen::show_opacity() {
  set_opacity(opacity_);
}

bool SplashScreen::brighten() {
  opacity_ += opacity_step;
  const bool done = opacity_ > 1.0;
  if (done) opacity_ = 1.0;
  show_opacity();
  if (!done) return true;
  step_ =
      Timeout::once(pause, [this] { step_ = Timeout::every(tick, [this] { return darken(); }); });
  return false;
}

bool SplashScreen::darken() {
  opacity_ -= opacity_step;
  if (opacity_ > 0) {
    show_opacity();
    return true;
  }
  hide();
  delete this;
  return false;
}

}  // namespace zemblar

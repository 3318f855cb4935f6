#include <giomm/init.h>
#include <gmock/gmock.h>
#include <gtkmm/main.h>

// Runs under a virtual display. What the toolkit calls critical is a fault of ours.
int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  Gio::init();
  const Gtk::Main toolkit(argc, argv);
  for (const char* domain : {"Gtk", "Gdk", "GLib", "GLib-GObject"}) {
    g_log_set_fatal_mask(domain,
                         static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
  }
  return RUN_ALL_TESTS();
}

#include <giomm/init.h>
#include <gmock/gmock.h>
#include <gtkmm/main.h>

#include "tests/support/layout_fixture.h"

// Runs under a virtual display. What the toolkit calls critical is a fault of ours.
int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // What the program remembers for the user is neither read nor written.
  const zemblar::test::TemporaryFolder home;
  g_setenv("XDG_CONFIG_HOME", home.path().c_str(), TRUE);
  Gio::init();
  const Gtk::Main toolkit(argc, argv);
  for (const char* domain : {"Gtk", "Gdk", "GLib", "GLib-GObject"}) {
    g_log_set_fatal_mask(domain,
                         static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
  }
  return RUN_ALL_TESTS();
}

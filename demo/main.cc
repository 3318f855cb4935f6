// The program on a given layout, with a simulated railway to drive: what scripts/demo starts.
//   zemblar-demo LAYOUT
// A layout file cannot hold an ECoS, so it is added here, as New Device does it.

#include <glibmm/main.h>
#include <gtkmm/main.h>

#include <iostream>

#include "core/global_options.h"
#include "core/layout.h"
#include "demo/railway.h"
#include "devices/device_ecos.h"
#include "ui/application.h"
#include "ui/lok_controller.h"

namespace {

// After the first window, which the splash delays.
constexpr unsigned throttle_delay = 1700;  // ms

void add_station(std::uint16_t port) {
  auto* station = zemblar::Layout::get().get_devices().add(new zemblar::ECoS);
  station->set_host("127.0.0.1:" + std::to_string(port));
}

}  // namespace

int main(int argc, char** argv) {
  zemblar::set_up_process();
  Gtk::Main toolkit(argc, argv);
  if (argc != 2) {
    std::cerr << "usage: zemblar-demo LAYOUT\n";
    return 2;
  }
  zemblar::GlobalOptions::get().set_layout(argv[1]);
  zemblar::Application application({.track_editor = true});
  zemblar::demo::Railway railway;
  add_station(railway.port());
  railway.build();
  Glib::signal_timeout().connect_once([] { zemblar::LokController::open(); }, throttle_delay);
  zemblar::Application::run();
  return 0;
}

// The program on a given layout, with a simulated railway to drive: what scripts/demo starts.
//   zemblar-demo [--liusb] LAYOUT
// A layout file cannot hold an ECoS, so it is added here, as New Device does it.

#include <glibmm/main.h>
#include <gtkmm/main.h>

#include <iostream>

#include "core/global_options.h"
#include "core/layout.h"
#include "demo/railway.h"
#include "devices/ecos/device_ecos.h"
#include "devices/port/hw_list.h"
#include "runtime/scoped_connection.h"
#include "simulator/stations/console_input.h"
#include "ui/throttle/lok_controller.h"
#include "ui/windows/application.h"

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
  const bool with_liusb = argc == 3 && argv[1] == std::string_view("--liusb");
  if (argc != 2 && !with_liusb) {
    std::cerr << "usage: zemblar-demo [--liusb] LAYOUT\n";
    return 2;
  }
  auto hardware = std::make_unique<zemblar::simulator::MemoryHardware>();
  zemblar::demo::Railway railway;
  railway.plug_bus_into(*hardware);
  if (with_liusb) railway.plug_liusb_into(*hardware);
  zemblar::HWList::use_source(std::move(hardware));
  zemblar::GlobalOptions::get().set_layout(argv[argc - 1]);
  // What it adds to the layout by itself is nobody's work, and its railway ends with it.
  zemblar::Application application(
      {.track_view = true, .track_editor = true, .keep_unsaved = false, .guarded = false});
  const auto begin = [&railway] {
    add_station(railway.port());
    railway.build();
  };
  begin();
  const zemblar::simulator::ConsoleInput typed(
      [&railway](std::string_view line) { return railway.obey(line); });
  const zemblar::ScopedConnection replaced(zemblar::Layout::signal_replaced().connect(begin));
  Glib::signal_timeout().connect_once([] { zemblar::LokController::open(); }, throttle_delay);
  application.run();
  return 0;
}

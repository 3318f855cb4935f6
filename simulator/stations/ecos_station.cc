#include "simulator/stations/ecos_station.h"

#include <glibmm/main.h>

namespace zemblar::simulator {
namespace {

void after_on_main_loop(EcosHub::Milliseconds time, const std::function<void()>& action) {
  Glib::signal_timeout().connect_once(action, static_cast<unsigned>(time.count()));
}

}  // namespace

EcosStation::EcosStation() : EcosHub(after_on_main_loop) {}

}  // namespace zemblar::simulator

#include "simulator/stations/ecos_station.h"

#include <glibmm/main.h>

namespace zemblar::simulator {
namespace {

void after_on_main_loop(EcosHub::Milliseconds time, const std::function<void()>& action) {
  Glib::signal_timeout().connect_once(action, static_cast<unsigned>(time.count()));
}

}  // namespace

EcosStation::EcosStation() : hub_(after_on_main_loop), server_(hub_) {}

unsigned EcosStation::add_locomotive(unsigned address, std::string name) {
  unsigned id = 0;
  hub_.post(hub_.model().add_locomotive(address, std::move(name), &id));
  return id;
}

std::optional<EcosLocomotive> EcosStation::locomotive(unsigned address) const {
  const auto* found = hub_.model().locomotive(address);
  return found ? std::optional(*found) : std::nullopt;
}

std::optional<char> EcosStation::switch_position(unsigned output) const {
  const auto& switches = hub_.model().switches();
  const auto found = switches.find("DCC" + decimal(output));
  return found == switches.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace zemblar::simulator

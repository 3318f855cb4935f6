#include "simulator/railway/sample_railway.h"

#include <stdexcept>

#include "core/status.h"
#include "devices/port/hw_list.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto until_in_service = 5s;

MemoryHardware* look_at_memory() {
  auto source = std::make_unique<MemoryHardware>();
  auto* hardware = source.get();
  HWList::use_source(std::move(source));
  return hardware;
}

}  // namespace

SampleRailway::Document::Document(const std::string& path) {
  auto& layout = Layout::get(new Layout);
  layout.new_document(false);
  open(path);
}

SampleRailway::SampleRailway(const std::string& path, std::uint64_t seed)
    : hardware(look_at_memory()), document_(path), railway(seed) {
  station.on_executed([this](const Executed& executed) { obey(executed); });
  try {
    take_into_service();
  } catch (...) {
    end();
    throw;
  }
}

SampleRailway::~SampleRailway() {
  end();
}

// Fibers that wait get the time to notice, while the station and the bus are still there.
void SampleRailway::end() {
  for (const auto& train : railway.track.trains()) railway.track.lift(*train);
  station.end(false);
  Layout::get().new_document(false);
  clock.advance(until_in_service);
  railway.bus.unplug();
  Layout::get().destroy();
  clock.advance(0s);
}

void SampleRailway::open(const std::string& path) {
  if (!Layout::open(path)) throw std::runtime_error(get_status().raw());
}

void SampleRailway::take_into_service() {
  const auto placed = railway.build();
  HWList::get();
  railway.bus.plug_into(*hardware);
  clock.advance(until_in_service);
  Layout::get().set_track_power(true);
  clock.advance(until_in_service);
  for (const auto* train : placed) {
    const auto& name = train->options().name;
    if (!lok(name).front) throw std::runtime_error(name + " has not been seen");
  }
}

Lok& SampleRailway::lok(const std::string& name) {
  auto* lok = dynamic_cast<Lok*>(Layout::get().get_loks().find_child(name));
  if (!lok) throw std::runtime_error("there is no " + name);
  return *lok;
}

// As far as trains hear the station.
void SampleRailway::obey(const Executed& executed) {
  auto& track = railway.track;
  if (executed.kind == Executed::Kind::power) track.set_power(executed.value != 0);
  if (executed.kind != Executed::Kind::item) return;
  if (executed.item == DecoderUpdate::speed_bit &&
      executed.value == DecoderUpdate::emergency_stop) {
    return track.emergency_stop(executed.address);
  }
  if (const auto told = station.locomotive(executed.address)) {
    track.command(executed.address, told->speed, told->direction == Direction::Forwards);
  }
}

}  // namespace zemblar::simulator

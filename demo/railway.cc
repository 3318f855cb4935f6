#include "demo/railway.h"

#include <algorithm>
#include <iostream>

#include "simulator/stations/liusb_console.h"
#include "track/block.h"

namespace zemblar::demo {
namespace {

using simulator::TrackEvent;

void say(const std::string& text) {
  const simulator::EcosLogEntry entry{.time = std::chrono::system_clock::now(), .text = text};
  std::cout << simulator::format(entry) << std::endl;
}

void later(std::chrono::milliseconds delay, std::function<void()> call) {
  Timeout::once(delay, std::move(call)).release();
}

}  // namespace

Railway::Railway() : liusb_(later, [this](std::string_view bytes) { liusb_cable_.send(bytes); }) {
  liusb_cable_.on_bytes([this](std::string_view bytes) { on_liusb(bytes); });
  station_.log().on_entry([this](const simulator::EcosLogEntry& entry) { on_station(entry); });
  station_.listen();
  station_.press_go();
  railway_.track.signal_event().connect([this](const TrackEvent& event) { on_track(event); });
}

Railway::~Railway() {
  station_.log().on_entry({});
  liusb_.lose_power();
}

void Railway::plug_liusb_into(simulator::MemoryHardware& hardware) {
  const HWDevice record{.object_name = "memory/simulated-liusb",
                        .description = "LI-USB",
                        .hardware_ids = {"USB\\VID_0403&PID_D780"},
                        .port_name = "simulated-liusb"};
  hardware.plug_in(record, [this] { return liusb_cable_.plug(); });
}

void Railway::build() {
  for (const auto* train : railway_.build()) {
    const auto& block = train->leading_link()->get_block()->get_name();
    say(train->options().name + " stands in " + block.raw());
  }
}

std::string Railway::obey(std::string_view line) {
  constexpr std::string_view liusb = "liusb ";
  if (!line.starts_with(liusb)) return console_.run(line);
  return simulator::run_liusb_command(liusb_, line.substr(liusb.size()));
}

// The station's own state says what its decoders are told: asked after each answer.
void Railway::on_station(const simulator::EcosLogEntry& entry) {
  std::cout << simulator::format(entry) << std::endl;
  railway_.track.set_power(station_.model().track_power());
  for (const auto& train : railway_.track.trains()) {
    const auto address = train->options().address.number;
    const auto* known = station_.locomotive(address);
    if (!known) continue;
    const auto id = std::to_string(known->id);
    if (entry.text.starts_with("<REPLY set(" + id + ",stop"))
      railway_.track.emergency_stop(address);
    drive(address, std::min(known->speed, 126u), known->direction == 0);
  }
}

// The same: what it was told last.
void Railway::on_liusb(std::string_view bytes) {
  liusb_.receive(bytes);
  for (const auto& request : liusb_.take_requests()) say("LI-USB <- " + request);
  for (const auto& train : railway_.track.trains()) {
    const auto address = train->options().address.number;
    const auto* known = liusb_.station.locomotive(address);
    if (!known) continue;
    if (known->emergency) {
      railway_.track.emergency_stop(address);
    } else {
      drive(address, known->step, known->forwards);
    }
  }
}

void Railway::drive(unsigned address, unsigned step, bool forwards) {
  for (const auto& train : railway_.track.trains()) {
    if (train->options().address.number != address) continue;
    if (step == train->step() && forwards == train->wanted_forwards()) continue;
    railway_.track.command(address, step, forwards);
  }
}

void Railway::on_track(const TrackEvent& event) {
  const auto& name = event.train->options().name;
  const auto where = event.block ? event.block->get_name().raw() : "";
  switch (event.kind) {
    case TrackEvent::Kind::entered:
      return say(name + " enters " + where);
    case TrackEvent::Kind::turned:
      return say(name + " turns round in " + where);
    case TrackEvent::Kind::ran_off:
      return say(name +
                 (event.point_against ? " stands before a point set against it after "
                                      : " stands at the end of ") +
                 where);
    case TrackEvent::Kind::collision:
      return say(name + " has run into " + event.other->options().name + " in " + where);
    case TrackEvent::Kind::left:
      return;
  }
}

}  // namespace zemblar::demo

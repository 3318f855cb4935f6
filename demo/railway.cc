#include "demo/railway.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "core/layout.h"
#include "devices/device_tessara_railcom_reader.h"
#include "locomotives/lok.h"
#include "simulator/liusb_console.h"
#include "track/zone.h"

namespace zemblar::demo {
namespace {

using simulator::TrackEvent;

constexpr double point_length = 250;  // mm; zones have a metre
/// A second, on all readers together: what the bus can carry. By them they tell who has left.
constexpr unsigned other_packets = 200;

struct Place {
  const char* lok;
  const char* block;
  double length;
  double top_speed;
};
/// In the sample layouts; those whose block is not in the open one stay away.
constexpr std::array places{
    Place{"Local 24", "North Line East", 350, 300},
    Place{"Express 103", "Station 1", 500, 420},
    Place{"Railcar 5", "Branch North", 280, 300},
    Place{"Local 24", "Inner East 2", 350, 300},
    Place{"Express 103", "Central 3 East", 500, 420},
    Place{"Local 64", "Hillside 1 West", 350, 300},
    Place{"Goods 1200", "Central 1 East", 600, 250},
    Place{"Railcar 5", "Valley 2", 250, 280},
    Place{"Goods 44", "Yard 2 West", 500, 250},
    Place{"Shunter 3", "Yard 5", 150, 150},
};

void say(const std::string& text) {
  const simulator::EcosLogEntry entry{.time = std::chrono::system_clock::now(), .text = text};
  std::cout << simulator::format(entry) << std::endl;
}

void later(std::chrono::milliseconds delay, std::function<void()> call) {
  Timeout::once(delay, std::move(call)).release();
}

template <typename Visit>
void for_each_block(Section section, const Visit& visit) {
  for (auto* child : Layout::get().get_toplevel(section)) {
    if (auto* block = dynamic_cast<Block*>(child)) visit(*block);
  }
}

}  // namespace

Railway::Railway() : liusb_(later, [this](std::string_view bytes) { liusb_cable_.send(bytes); }) {
  liusb_cable_.on_bytes([this](std::string_view bytes) { on_liusb(bytes); });
  bus_.master.log = false;
  bus_.serve(track_);
  station_.on_log([this](const simulator::EcosLogEntry& entry) { on_station(entry); });
  station_.listen();
  station_.press_go();
  track_.sensor_options().longest_delay = std::chrono::milliseconds(80);
  track_.sensor_options().dropouts_per_minute = 6;
  track_.signal_event().connect([this](const TrackEvent& event) { on_track(event); });
}

Railway::~Railway() {
  station_.on_log({});
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
  add_readers();
  wire_blocks();
  for (const auto& [lok, block, length, top_speed] : places) {
    put(lok, block, {.length = length, .top_speed = top_speed});
  }
}

std::string Railway::obey(std::string_view line) {
  constexpr std::string_view liusb = "liusb ";
  if (!line.starts_with(liusb)) return console_.run(line);
  return simulator::run_liusb_command(liusb_, line.substr(liusb.size()));
}

// Those that the layout has, before its bus is looked at.
void Railway::add_readers() {
  for (const auto* bus : Layout::get().get_devices()) {
    for (const auto* device : *bus) {
      const auto* reader = dynamic_cast<const DeviceTessaraRailComReader*>(device);
      if (reader && readers_.insert(reader->get_address()).second) {
        const auto inputs = std::distance(reader->begin(), reader->end());
        bus_.add_reader(reader->get_address(), static_cast<unsigned>(inputs));
      }
    }
  }
  for (const auto address : readers_) {
    bus_.reader(address).options.other_packets =
        other_packets / static_cast<unsigned>(readers_.size());
  }
}

void Railway::wire_blocks() {
  const auto wire = [this](Block& block) {
    if (!dynamic_cast<Zone*>(&block)) track_.set_length(&block, point_length);
    bus_.wire_to_input(block);
  };
  for_each_block(Section::blocks, wire);
  for_each_block(Section::points, wire);
}

void Railway::put(const char* lok, const char* block, simulator::TrainOptions options) {
  const auto* driven = dynamic_cast<Lok*>(Layout::get().get_loks().find_child(lok));
  auto* zone = dynamic_cast<Zone*>(Layout::get().get_blocks().find_child(block));
  if (!driven || !zone) return;
  const auto address = driven->get_decoders().front()->get_address();
  options.name = lok;
  options.address = {address.get_addr(), address.is_long()};
  const auto& trains = track_.trains();
  const auto known = std::ranges::find_if(
      trains, [lok](const auto& train) { return train->options().name == lok; });
  auto& train = known == trains.end() ? track_.add_train(options) : **known;
  if (track_.place(train, zone->right)) say(options.name + " stands in " + block);
}

// The station's own state says what its decoders are told: asked after each answer.
void Railway::on_station(const simulator::EcosLogEntry& entry) {
  std::cout << simulator::format(entry) << std::endl;
  track_.set_power(station_.track_power());
  for (const auto& train : track_.trains()) {
    const auto address = train->options().address.number;
    const auto known = station_.locomotive(address);
    if (!known) continue;
    const auto id = std::to_string(known->id);
    if (entry.text.starts_with("<REPLY set(" + id + ",stop")) track_.emergency_stop(address);
    drive(address, std::min(known->speed, 126u), known->direction == 0);
  }
}

// The same: what it was told last.
void Railway::on_liusb(std::string_view bytes) {
  liusb_.receive(bytes);
  for (const auto& request : liusb_.take_requests()) say("LI-USB <- " + request);
  for (const auto& train : track_.trains()) {
    const auto address = train->options().address.number;
    const auto* known = liusb_.station.locomotive(address);
    if (!known) continue;
    if (known->emergency) {
      track_.emergency_stop(address);
    } else {
      drive(address, known->step, known->forwards);
    }
  }
}

void Railway::drive(unsigned address, unsigned step, bool forwards) {
  for (const auto& train : track_.trains()) {
    if (train->options().address.number != address) continue;
    if (step == train->step() && forwards == train->wanted_forwards()) continue;
    track_.command(address, step, forwards);
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

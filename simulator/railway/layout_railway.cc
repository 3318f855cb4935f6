#include "simulator/railway/layout_railway.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "core/layout.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "locomotives/lok.h"
#include "track/zone.h"

namespace zemblar::simulator {
namespace {

constexpr double point_length = 250;  // mm; zones have a metre unless named here
struct Length {
  const char* zone;
  double length;
};
constexpr std::array lengths{Length{"North Approach", 300}, Length{"South Approach", 300}};

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
    Place{"Local 64", "Outer East 2", 350, 300},
    Place{"Goods 1200", "Central 2 East", 600, 250},
    Place{"Railcar 5", "Yard Bypass East", 250, 280},
    Place{"Goods 44", "Yard 1 East", 400, 250},
    Place{"Express 218", "Valley 2", 400, 250},
    Place{"Shunter 3", "Sawmill", 150, 150},
};

template <typename Visit>
void for_each_block(Section section, const Visit& visit) {
  for (auto* child : Layout::get().get_toplevel(section)) {
    if (auto* block = dynamic_cast<Block*>(child)) visit(*block);
  }
}

}  // namespace

LayoutRailway::LayoutRailway(std::uint64_t seed) : track(seed) {
  bus.master.log = false;
  bus.serve(track);
  track.sensor_options().longest_delay = std::chrono::milliseconds(80);
  track.sensor_options().dropouts_per_minute = 6;
}

std::vector<const Train*> LayoutRailway::build() {
  add_readers();
  wire_blocks();
  std::vector<const Train*> placed;
  for (const auto& [lok, block, length, top_speed] : places) {
    const auto* train = put(lok, block, {.length = length, .top_speed = top_speed});
    if (train) placed.push_back(train);
  }
  return placed;
}

Train* LayoutRailway::find_train(std::string_view name) const {
  const auto found = std::ranges::find_if(
      track.trains(), [name](const auto& train) { return train->options().name == name; });
  return found == track.trains().end() ? nullptr : found->get();
}

// The bus gets the readers that the layout has before it is looked at.
void LayoutRailway::add_readers() {
  for (const auto* holder : Layout::get().get_devices()) {
    for (const auto* device : *holder) {
      const auto* reader = dynamic_cast<const DeviceTessaraRailComReader*>(device);
      if (reader && readers_.insert(reader->get_address()).second) {
        const auto inputs = std::distance(reader->begin(), reader->end());
        bus.add_reader(reader->get_address(), static_cast<unsigned>(inputs));
      }
    }
  }
  for (const auto address : readers_) {
    bus.reader(address).options.other_packets =
        other_packets / static_cast<unsigned>(readers_.size());
  }
}

void LayoutRailway::wire_blocks() {
  const auto wire = [this](Block& block) {
    if (!dynamic_cast<Zone*>(&block)) track.set_length(&block, point_length);
    bus.wire_to_input(block);
  };
  for_each_block(Section::blocks, wire);
  for_each_block(Section::points, wire);
  for (const auto& [zone, length] : lengths) {
    const auto* block = dynamic_cast<Zone*>(Layout::get().get_blocks().find_child(zone));
    if (block) track.set_length(block, length);
  }
}

const Train* LayoutRailway::put(const char* lok, const char* block, TrainOptions options) {
  const auto* driven = dynamic_cast<Lok*>(Layout::get().get_loks().find_child(lok));
  auto* zone = dynamic_cast<Zone*>(Layout::get().get_blocks().find_child(block));
  if (!driven || !zone) return nullptr;
  const auto address = driven->get_decoders().front()->get_address();
  options.name = lok;
  options.address = {address.get_addr(), address.is_long()};
  auto* known = find_train(lok);
  auto& train = known ? *known : track.add_train(options);
  return track.place(train, zone->right) ? &train : nullptr;
}

}  // namespace zemblar::simulator

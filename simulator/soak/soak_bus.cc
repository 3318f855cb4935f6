#include "simulator/soak/soak_bus.h"

#include <algorithm>
#include <array>

#include "core/layout.h"
#include "simulator/bus/bus_faults.h"
#include "simulator/soak/soak_scene.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

// --- How long it may take ---

constexpr milliseconds monitor_period = 1s;
constexpr milliseconds exchange = 45ms;  // DTR, the answer, and the silence that ends it
constexpr milliseconds relay = 2 * exchange;
constexpr milliseconds poll_pause = 50ms;
constexpr milliseconds probe = 7 * exchange;  // two pings, and the speed asked, set and restored
constexpr milliseconds scan_step = 100ms + relay;  // a ping gives up then
constexpr unsigned start_relays = 6;

/// Whoever talks waits for all others once each time, and for a scan: until the fault is noticed in
/// a poll, and while all readers start.
milliseconds allowed(unsigned readers) {
  const auto turn = (readers + 1) * relay;
  return poll_pause + turn + monitor_period + readers * probe + start_relays * turn + scan_step;
}

constexpr auto longest_stand = 3min;
/// In which traffic gets the states of all inputs told anew, and locomotives that have gone are
/// forgotten.
constexpr auto settling = 15s;
constexpr auto steady = 8s;
constexpr auto step = 100ms;

class BusFaultRun {
 public:
  explicit BusFaultRun(const BusFaultOptions& options)
      : options_(options), scene_(options.seed, options.readers), bus_(*scene_.bus()) {
    scene_.model.sensor_options() = {
        .longest_delay = 120ms, .dropouts_per_minute = 6, .longest_dropout = 100ms};
    scene_.model.signal_event().connect([this](const TrackEvent& event) {
      if (event.kind != TrackEvent::Kind::collision) return;
      collided_.push_back(event.train);
      collided_.push_back(event.other);
    });
    for (unsigned i = 0; i < bus_.readers(); ++i) bus_.hardware_of(i).options.other_packets = 50;
    lay_track();
  }

  BusFaultResult run() {
    using Hours = std::chrono::duration<double, std::ratio<3600>>;
    const auto end =
        scene_.clock.now() + std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    result_.longest_allowed = options_.allowed.value_or(allowed(bus_.readers()));
    pass(settling);
    while (scene_.clock.now() < end && result_.trouble.empty()) {
      suffer(bus_faults()[scene_.chance.below(bus_faults().size())]);
    }
    return result_;
  }

 private:
  void lay_track() {
    const auto count = std::min(bus_.readers() * BusInService::inputs_each, 16u);
    for (unsigned i = 0; i < count; ++i) {
      const double length = 900 + 1500 * scene_.chance.fraction();
      zones_.push_back(&scene_.add_block<Zone>("Zone " + std::to_string(i + 1), length));
      if (i > 0) zones_[i - 1]->right.connect(&zones_[i]->left);
    }
    zones_.back()->right.connect(&zones_.front()->left);
    for (unsigned i = 0; i < 4; ++i) {
      scene_.add_train({.name = "Train " + std::to_string(i + 1),
                        .address = {3 + 300 * i, i > 0},
                        .length = 300 + 400 * scene_.chance.fraction(),
                        .top_speed = 250 + 150 * scene_.chance.fraction()});
    }
  }

  // --- Traffic ---

  void pass(Clock::duration time) {
    for (const auto end = scene_.clock.now() + time; scene_.clock.now() < end;) {
      scene_.pass(step);
      note_inputs();
      keep_trains_running();
    }
  }

  void keep_trains_running() {
    for (auto& driven : scene_.trains()) {
      const bool stuck = driven.train->on_track() && scene_.held_up(driven) > longest_stand;
      if (stuck) collided_.push_back(driven.train);
      if (scene_.chance.happens(0.01)) {
        driven.lok->set_speed(static_cast<unsigned>(30 + scene_.chance.below(90)));
      }
    }
    for (const auto* train : std::exchange(collided_, {})) scene_.clear_away(*scene_.find(train));
    for (auto& driven : scene_.trains()) {
      auto& zone = *zones_[scene_.chance.below(zones_.size())];
      if (!driven.train->on_track() && is_free(zone)) scene_.place(driven, zone.right);
    }
  }
  bool is_free(const Zone& zone) {
    return std::ranges::none_of(scene_.trains(),
                                [&](const auto& driven) { return driven.train->is_in(&zone); });
  }

  // --- Faults ---

  void suffer(const BusFault& fault) {
    pass(scene_.chance.between(0ms, 3s));
    const bool scan = scene_.chance.happens(0.2);
    if (scan) bus_.set_scanning(true);
    fault.begin({bus_.bus, *bus_.hardware, scene_.chance});
    pass(scene_.chance.happens(0.5) ? scene_.chance.between(0ms, 300ms)
                                    : scene_.chance.between(0ms, 8s));
    fault.end({bus_.bus, *bus_.hardware, scene_.chance});
    wait_for_service(fault);
    if (scan && bus_.scanning()) bus_.set_scanning(false);
    remove_other_masters();
    pass(settling);
    compare(fault);
  }

  void wait_for_service(const BusFault& fault) {
    const auto ended = scene_.clock.now();
    auto& count = result_.faults[fault.name];
    ++count.times;
    // What has just ended may not have been noticed yet.
    const auto noticed = ended + result_.longest_allowed;
    auto back = ended;
    while (scene_.clock.now() < noticed) {
      scene_.pass(10ms);
      note_inputs();
      if (!in_service()) back = scene_.clock.now();
    }
    count.longest_return =
        std::max(count.longest_return, std::chrono::ceil<milliseconds>(back - ended));
    if (!in_service()) fail(fault, "not all is in service again");
  }

  bool in_service() {
    if (!bus_.all_in_service()) return false;
    for (unsigned i = 0; i < bus_.readers(); ++i) {
      const auto& reader = bus_.hardware_of(i);
      const auto speed = bus_.bus.master.speed(BusInService::address_of(i));
      if (!reader.streaming() || reader.speed() != speed) return false;
    }
    return true;
  }

  /// The program takes a master that it does not know for a new one.
  void remove_other_masters() {
    std::vector<Object*> others;
    for (auto* device : Layout::get().get_devices()) {
      if (device->get_name().raw().starts_with("Tessara Bus") && device != &bus_.master()) {
        others.push_back(device);
      }
    }
    for (auto* other : others) other->destroy();
  }

  // --- Detectors ---

  struct Rails {
    bool current = false;
    Clock::time_point since{};
  };

  void note_inputs() {
    for (unsigned i = 0; i < bus_.readers(); ++i) {
      for (unsigned k = 0; k < BusInService::inputs_each; ++k) {
        auto& rails = rails_[{i, k}];
        const bool current = bus_.hardware_of(i).state(k) != 0;
        if (current != rails.current) rails = {current, scene_.clock.now()};
      }
    }
  }

  void compare(const BusFault& fault) {
    for (const auto& [place, rails] : rails_) {
      const auto [reader, index] = place;
      if (scene_.clock.now() - rails.since < steady) continue;
      if (bus_.input(reader, index).occupied() == rails.current) continue;
      fail(fault, "input " + std::to_string(index) + " of reader " + std::to_string(reader) +
                      (rails.current ? " is free under a train" : " is occupied by nothing"));
    }
  }

  void fail(const BusFault& fault, const std::string& what) {
    if (!result_.trouble.empty()) return;
    result_.trouble = what + " after \"" + fault.name + "\", seed " +
                      std::to_string(options_.seed) + ", " +
                      std::to_string(scene_.clock.now().time_since_epoch() / 1ms) + " ms";
  }

  BusFaultOptions options_;
  SoakScene scene_;
  BusInService& bus_;
  std::vector<Zone*> zones_;
  std::vector<const Train*> collided_;
  std::map<std::pair<unsigned, unsigned>, Rails> rails_;
  BusFaultResult result_;
};

}  // namespace

BusFaultResult run_bus_faults(const BusFaultOptions& options) {
  return BusFaultRun(options).run();
}

}  // namespace zemblar::simulator

#include "simulator/soak/bus_latency.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <stdexcept>

#include "core/layout.h"
#include "simulator/soak/soak_scene.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr milliseconds station_time = 10ms;  // one request and its answer on a local network
constexpr unsigned other_locomotives = 40;
constexpr milliseconds speed_change = 500ms;  // of each of them
constexpr double endless = 1e7;               // mm
constexpr milliseconds too_long = 60s;

// The times of the drivers' end of the line.
constexpr milliseconds poll_pause = 50ms;
constexpr milliseconds transmission = 20ms;  // DTR is up
constexpr milliseconds silence = 15ms;       // two reads of 5 ms without bytes, after a third begun
constexpr milliseconds answer_begins = 2ms;
constexpr milliseconds ping_limit = 100ms;
constexpr milliseconds exchange = transmission + answer_begins + silence;
constexpr unsigned packets_per_second = 100;
constexpr double record_bytes = 6;  // of a packet that nobody answers
constexpr double reply_bytes = 255;
constexpr double byte_ms = 0.087;
constexpr double change_bytes = 30;  // the record with the states, and some answers

/// One poll of a reader that has collected records for that long.
milliseconds poll_after(milliseconds time, Load load) {
  const ReaderHardware::Options reader;
  double bytes = change_bytes;
  if (load == Load::every_packet) {
    bytes += packets_per_second * record_bytes * std::chrono::duration<double>(time).count();
  }
  bytes = std::min(bytes, double(reader.longest_answer));
  const auto replies = std::ceil(bytes / reply_bytes);
  return exchange + std::chrono::ceil<milliseconds>(exchange * replies) +
         milliseconds(static_cast<long>(bytes * byte_ms));
}

/// From one poll of a reader to its next one. What is told meanwhile makes that longer.
milliseconds round_of(unsigned readers, Load load) {
  auto round = poll_pause;
  for (milliseconds before{}; round != before;) {
    before = round;
    round = poll_pause + readers * poll_after(before, load);
  }
  return round;
}

/// In how many polls a reader tells all that may wait in it: once records are left behind, they
/// pile up until the reader drops the oldest.
double polls_to_tell(milliseconds round, Load load) {
  const ReaderHardware::Options reader;
  const auto answers = [&reader](double records) {
    return records * record_bytes / double(reader.longest_answer);
  };
  if (load != Load::every_packet) return 1;
  const auto told = packets_per_second * std::chrono::duration<double>(round).count();
  return answers(told) <= 1 ? 1 : std::ceil(answers(double(reader.most_records)));
}

milliseconds bound_of(unsigned readers, Load load) {
  const auto round = round_of(readers, load);
  auto bound =
      std::chrono::ceil<milliseconds>(polls_to_tell(round, load) * round) + poll_after(round, load);
  if (load == Load::scanning) bound += ping_limit + 2 * exchange;
  const auto ahead = load == Load::other_locomotives ? other_locomotives : 0;
  return bound + (ahead + 1) * station_time;
}

class Measurement {
 public:
  Measurement(unsigned readers, Load load, std::uint64_t seed)
      : load_(load),
        scene_(seed, readers),
        bus_(*scene_.bus()),
        here_(scene_.add_block<Zone>("Here", endless)),
        beyond_(scene_.add_block<Zone>("Beyond", 1000)),
        ahead_(scene_.add_block<Zone>("Ahead", 1000)),
        train_(scene_.add_train({.name = "Train", .address = {3, false}, .top_speed = 100})) {
    here_.right.connect(&ahead_.left);
    ahead_.right.connect(&beyond_.left);
    scene_.station().delay = station_time;
    for (unsigned i = 0; load_ == Load::every_packet && i < readers; ++i) {
      bus_.hardware_of(i).options.other_packets = packets_per_second;
    }
    add_other_locomotives();
    occupy_beyond();
    scene_.place(train_, here_.right);
    pass(10s);
    train_.lok->set_speed(126);
    if (load_ == Load::other_locomotives) change_speeds();
  }

  BusLatency run(unsigned samples) {
    BusLatency result{
        .readers = bus_.readers(), .load = load_, .bound = bound_of(bus_.readers(), load_)};
    for (unsigned i = 0; i < samples; ++i) {
      choose_input();
      if (load_ == Load::scanning && !bus_.scanning()) bus_.set_scanning(true);
      await([this] { return train_.train->step() > 0; }, "the train does not run");
      pass(scene_.chance.between(0ms, 1s));
      auto& detector = *bus_.bus.detector_of(&ahead_);
      detector.set_current(true);
      result.times.push_back(
          await([this] { return train_.train->step() == 0; }, "the train does not stop"));
      detector.set_current(false);
      result.holds.push_back(
          await([this] { return !ahead_.occupied(); }, "the block does not get free"));
    }
    std::ranges::sort(result.times);
    std::ranges::sort(result.holds);
    return result;
  }

 private:
  void add_other_locomotives() {
    for (unsigned i = 0; load_ == Load::other_locomotives && i < other_locomotives; ++i) {
      auto* lok = Layout::get().get_loks().add(new Lok);
      lok->get_decoders().front()->set_address(Address(200 + i, true));
      others_.push_back(lok);
    }
  }
  /// By a train that stands there: when the other one's head comes into the block ahead, it has to
  /// stop in there.
  void occupy_beyond() {
    bus_.bus.detector_of(&beyond_)->set_current(true);
    beyond_.set_lok(Layout::get().get_loks().add(new Lok));
  }
  void change_speeds() {
    auto* lok = others_[next_++ % others_.size()];
    lok->set_speed(static_cast<unsigned>(scene_.chance.below(127)));
    changes_ = Timeout::once(speed_change / other_locomotives, [this] { change_speeds(); });
  }

  /// Any but those of the two other blocks.
  void choose_input() {
    const auto count = bus_.readers() * BusInService::inputs_each;
    const auto input = static_cast<unsigned>(2 + scene_.chance.below(count - 2));
    bus_.assign(ahead_, input % bus_.readers(), input / bus_.readers());
  }

  void pass(milliseconds time) { scene_.clock.advance(time); }
  template <typename Condition>
  milliseconds await(const Condition& condition, const char* otherwise) {
    for (milliseconds time{0}; time < too_long; ++time) {
      if (condition()) return time;
      pass(1ms);
    }
    throw std::runtime_error(otherwise + ("\n" + scene_.describe()));
  }

  Load load_;
  SoakScene scene_;
  BusInService& bus_;
  Zone& here_;
  Zone& beyond_;
  Zone& ahead_;
  Driven& train_;
  std::vector<Lok*> others_;
  std::size_t next_ = 0;
  Timeout changes_;
};

milliseconds quantile(const std::vector<milliseconds>& sorted, double share) {
  return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

constexpr std::array load_names{"quiet", "scanning", "40 others", "all packets"};

}  // namespace

BusLatency measure_bus_latency(unsigned readers, Load load, unsigned samples, std::uint64_t seed) {
  return Measurement(readers, load, seed).run(samples);
}

void print(const std::vector<BusLatency>& rows, std::ostream& out) {
  out << "                        from current to speed 0 (ms)          from no current to free "
         "(ms)\n"
         "  readers  load           min  median    p95    max  bound    median     max\n";
  for (const auto& row : rows) {
    out << std::setw(9) << row.readers << "  " << std::left << std::setw(12)
        << load_names[static_cast<std::size_t>(row.load)] << std::right;
    for (const double share : {0.0, 0.5, 0.95, 1.0}) {
      out << std::setw(share == 0.5 ? 8 : 7) << quantile(row.times, share).count();
    }
    out << std::setw(7) << row.bound.count() << std::setw(10) << quantile(row.holds, 0.5).count()
        << std::setw(8) << row.holds.back().count() << (row.good() ? "" : "  TOO LONG") << '\n';
  }
}

}  // namespace zemblar::simulator

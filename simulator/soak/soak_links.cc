#include "simulator/soak/soak_links.h"

#include <algorithm>
#include <array>

#include "core/status.h"
#include "simulator/railway/linked_railway.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr unsigned trains = 10;
constexpr Traffic traffic{.mean_pause = 150ms, .stops = 0.2, .power = 0.02};
constexpr milliseconds mean_gap =
    4800ms;  // between faults; ten a minute, as some find their link failing
constexpr milliseconds shortest_fault = 50ms;
/// An item that is refused again after 2 s waits for 4 s more, and less than 5 s from then on.
constexpr milliseconds longest_fault = 4s;
constexpr milliseconds longest_half_open = 18s;
/// A late answer of the last fault would pass for one that the next fault keeps back.
constexpr milliseconds rest = 1500ms;
constexpr milliseconds shortest_phase = 2min;
constexpr milliseconds longest_phase = 5min;
constexpr milliseconds step = 20ms;

// --- Order ---

/// The values of one item of one train in the order in which they were wished, and how far each
/// station has come.
class Wishes {
 public:
  explicit Wishes(std::uint32_t initial) : values_{initial} {}

  void add(std::uint32_t value) {
    if (value != values_.back()) values_.push_back(value);
  }
  /// False when that value is an older one than what the station has had already, or was never
  /// wished.
  bool arrive(std::size_t station, std::uint32_t value) {
    auto& place = places_.at(station);
    const auto found = std::find(values_.begin() + place, values_.end(), value);
    if (found == values_.end()) return false;
    place = found - values_.begin();
    return true;
  }
  [[nodiscard]] bool ever() const { return values_.size() > 1; }
  [[nodiscard]] std::uint32_t newest() const { return values_.back(); }

 private:
  std::vector<std::uint32_t> values_;
  std::array<std::ptrdiff_t, 2> places_{};
};

// --- The run ---

std::vector<StationKind> stations(std::uint64_t seed) {
  return {StationKind::ecos, seed % 2 == 0 ? StationKind::ecos : StationKind::liusb};
}

class LinkFaultRun {
 public:
  explicit LinkFaultRun(const LinkFaultOptions& options)
      : options_(options), railway_(stations(options.seed), trains, options.seed) {
    for (unsigned address = 1; address <= trains; ++address) {
      const auto state = railway_.decoder(address).state();
      for (const auto item : items()) wishes_.emplace(Key{address, item}, state.value_of(item));
    }
    railway_.on_wish([this](unsigned address) { note_wish(address); });
    for (std::size_t i = 0; i < links().size(); ++i) {
      links()[i]->on_executed([this, i](const auto& executed) { note_arrival(i, executed); });
    }
  }

  LinkFaultResult run() {
    using Hours = std::chrono::duration<double, std::ratio<3600>>;
    const auto end =
        railway_.clock.now() + std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    while (railway_.clock.now() < end && result_.trouble.empty()) {
      railway_.begin_traffic(traffic);
      fail_later();
      railway_.clock.advance(railway_.chance.between(shortest_phase, longest_phase));
      railway_.end_traffic();
      end_faults();
      compare();
    }
    return result_;
  }

 private:
  using Key = std::pair<unsigned, std::uint32_t>;

  [[nodiscard]] const LinkedRailway::Links& links() const { return railway_.links(); }
  static std::vector<std::uint32_t> items() {
    std::vector<std::uint32_t> all{DecoderUpdate::speed_bit, DecoderUpdate::direction_bit};
    for (unsigned fn = 0; fn < LinkedRailway::functions; ++fn) {
      all.push_back(DecoderUpdate::function_bit(fn));
    }
    return all;
  }

  void note_wish(unsigned address) {
    ++result_.wishes;
    note_state(address);
  }

  void note_state(unsigned address) {
    if (address == 0) return;
    const auto& state = railway_.decoder(address).state();
    for (const auto item : items()) wishes_.at({address, item}).add(state.value_of(item));
  }

  void note_arrival(std::size_t station, const Executed& executed) {
    ++result_.arrivals;
    const auto found = wishes_.find({executed.address, executed.item});
    if (executed.kind != Executed::Kind::item || found == wishes_.end()) return;
    note_state(executed.address);  // it may arrive before the wish has returned
    if (found->second.arrive(station, executed.value)) return;
    fail(describe(station, found->first) + " is told " + std::to_string(executed.value) +
         " after something newer");
  }

  // --- Faults ---

  struct Failing {
    bool now = false;
    Timeout end{};
    Clock::time_point ended{};
  };

  void fail_later() {
    next_fault_ = Timeout::once(railway_.chance.between(0ms, 2 * mean_gap), [this] {
      fail_later();
      fail_some_link();
    });
  }

  void fail_some_link() {
    const auto which = railway_.chance.below(links().size());
    auto& failing = failing_.at(which);
    if (failing.now || railway_.clock.now() - failing.ended < rest) return;
    auto& link = *links()[which];
    const auto fault = some_fault(link);
    const auto longest = fault == LinkFault::half_open ? longest_half_open : longest_fault;
    failing.now = true;
    victim_ = victim_ % trains + 1;
    link.begin(fault, victim_, railway_.chance);
    ++result_.faults[link.name() + std::string(": ") + title(fault)];
    failing.end = Timeout::once(railway_.chance.between(shortest_fault, longest),
                                [this, which] { end_fault(which); });
  }

  // What a LI-USB refuses counts as delivered: its answers do not tell.
  LinkFault some_fault(const StationLink& link) {
    constexpr std::size_t refusals = 2;  // they come first
    const std::size_t skipped = link.tells_refusals() ? 0 : refusals;
    return link_faults.at(skipped + railway_.chance.below(link_faults.size() - skipped));
  }

  void end_fault(std::size_t which) {
    auto& failing = failing_.at(which);
    if (!std::exchange(failing.now, false)) return;
    failing.end.cancel();
    failing.ended = railway_.clock.now();
    links()[which]->end(railway_.chance.happens(0.5));
  }

  void end_faults() {
    next_fault_.cancel();
    for (std::size_t which = 0; which < links().size(); ++which) end_fault(which);
    auto able = railway_.clock.now();
    for (const auto& link : links()) able = std::max(able, link->able_since());
    railway_.clock.advance(std::chrono::ceil<milliseconds>(able - railway_.clock.now()));
  }

  // --- What has to be true in a pause ---

  void compare() {
    ++result_.pauses;
    clear_status();
    auto returned = 0ms;
    for (auto waited = 0ms; waited < options_.allowed; waited += step) {
      if (!missing().empty()) returned = waited + step;
      railway_.clock.advance(step);
    }
    result_.longest_return = std::max(result_.longest_return, returned);
    if (const auto what = missing(); !what.empty()) fail(what);
  }

  /// Empty when nothing is.
  [[nodiscard]] std::string missing() const {
    for (std::size_t station = 0; station < links().size(); ++station) {
      auto& link = *links()[station];
      for (const auto& [key, wishes] : wishes_) {
        if (wishes.ever() && !is_at(link, key, wishes.newest())) {
          return describe(station, key) + " is not " + std::to_string(wishes.newest());
        }
      }
      if (!railway_.power_wished() && link.power()) return name(station) + " has its power on";
      if (link.device().link_state().phase != LinkPhase::in_service) {
        return name(station) + " is " + display_name(link.device().link_state().phase).raw();
      }
      if (tells_of(link.device())) return "the status line says: " + get_status().raw();
    }
    return {};
  }

  /// An emergency stop is a speed of 0 to a station.
  static bool is_at(const StationLink& link, const Key& key, std::uint32_t wished) {
    const auto state = link.locomotive(key.first);
    return state &&
           state->value_of(key.second) == (wished == DecoderUpdate::emergency_stop ? 0 : wished);
  }
  static bool tells_of(const Device& device) {
    const auto text = get_status().raw();
    return text.find(device.get_name().raw()) != std::string::npos &&
           text.find("answers again") == std::string::npos;
  }

  [[nodiscard]] std::string name(std::size_t station) const {
    return std::string(links()[station]->name()) + " " + std::to_string(station + 1);
  }
  [[nodiscard]] std::string describe(std::size_t station, const Key& key) const {
    const auto [address, item] = key;
    const auto what = item == DecoderUpdate::speed_bit       ? "the speed"
                      : item == DecoderUpdate::direction_bit ? "the direction"
                                                             : "function ";
    const bool is_function = item > DecoderUpdate::direction_bit;
    return name(station) + ": " + what +
           (is_function ? std::to_string(DecoderUpdate::function_of(item)) : "") + " of train " +
           std::to_string(address);
  }

  void fail(const std::string& what) {
    if (!result_.trouble.empty()) return;
    result_.trouble = what + ", seed " + std::to_string(options_.seed) + ", " +
                      std::to_string(railway_.clock.now().time_since_epoch() / 1ms) + " ms";
  }

  LinkFaultOptions options_;
  LinkedRailway railway_;
  std::map<Key, Wishes> wishes_;
  std::array<Failing, 2> failing_{};
  unsigned victim_ = 0;
  Timeout next_fault_;
  LinkFaultResult result_;
};

}  // namespace

LinkFaultResult run_link_faults(const LinkFaultOptions& options) {
  return LinkFaultRun(options).run();
}

}  // namespace zemblar::simulator

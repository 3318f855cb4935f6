#include "simulator/soak/fault_matrix.h"

#include <algorithm>
#include <optional>
#include <ostream>

#include "core/layout.h"
#include "core/status.h"
#include "simulator/railway/linked_railway.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr unsigned trains = 6;
constexpr unsigned victim = 1;   // whom the fault is about
constexpr unsigned stopped = 2;  // whom the emergency stop is for
constexpr unsigned thrown = 7;   // the point's address
constexpr milliseconds before = 1500ms;
constexpr milliseconds after = 1500ms;
constexpr milliseconds shortest_fault = 200ms;
constexpr milliseconds longest_fault = 6s;
constexpr milliseconds longest_half_open = 25s;  // beyond what the system needs to notice
constexpr milliseconds arrival_limit = 20s;
/// Of a healthy link: the conversation that is under way, and its own.
constexpr milliseconds at_once = 50ms;

/// Stations that serve all trains; the first one fails.
struct Setting {
  std::vector<StationKind> kinds;
  std::vector<const char*> rows;  // whose times these are
};

const std::vector<Setting>& settings() {
  using enum StationKind;
  static const std::vector<Setting> all{
      {{ecos}, {"ECoS"}},
      {{liusb}, {"LI-USB"}},
      {{ecos, ecos}, {"The failing one of two", "ECoS beside a failing ECoS"}},
      {{ecos, liusb}, {"The failing one of two", "LI-USB beside a failing ECoS"}},
      {{liusb, ecos}, {"The failing one of two", "ECoS beside a failing LI-USB"}}};
  return all;
}

bool is_of(Wish wish, const Executed& executed) {
  switch (wish) {
    case Wish::emergency_stop:
      return executed.item == DecoderUpdate::speed_bit && executed.address == stopped &&
             executed.value == DecoderUpdate::emergency_stop;
    case Wish::power_off:
      return executed.kind == Executed::Kind::power && executed.value == 0;
    case Wish::point:
      return executed.kind == Executed::Kind::point && executed.address == thrown;
  }
  return false;
}

/// One fault, and one wish at a random moment of it.
class Trial {
 public:
  Trial(const Setting& setting, LinkFault fault, Wish wish, std::uint64_t seed)
      : railway_(setting.kinds, trains, seed), fault_(fault), wish_(wish) {
    arrivals_.resize(railway_.links().size());
    for (std::size_t i = 0; i < arrivals_.size(); ++i) {
      railway_.links()[i]->on_executed([this, i](const auto& executed) {
        if (wished_ && is_of(wish_, executed)) arrivals_[i].push_back(railway_.clock.now());
      });
    }
    railway_.lok(stopped).set_speed(100);
    railway_.begin_traffic({.stops = 0.3, .favourite = victim, .spared = stopped});
  }

  void run() {
    const auto longest = fault_ == LinkFault::half_open ? longest_half_open : longest_fault;
    const auto length = railway_.chance.between(shortest_fault, longest);
    const bool by_hand = railway_.chance.happens(0.5);
    const auto begin = Timeout::once(before, [this] { begin_fault(); });
    const auto end = Timeout::once(before + length, [&] { failing().end(by_hand); });
    const auto make = Timeout::once(moment(length), [this] { make_wish(); });
    railway_.clock.advance(before + length + after);
    for (auto waited = 0ms; waited < arrival_limit && !all_arrived(); waited += 100ms) {
      railway_.clock.advance(100ms);
    }
    // A second one may follow.
    if (wish_ == Wish::point) railway_.clock.advance(after);
  }

  void enter(std::size_t link, FaultCell& cell) const {
    const auto& arrived = arrivals_[link];
    if (arrived.size() > 1) ++cell.repeated;
    if (arrived.empty()) {
      ++cell.missing;
      if (!told_) ++cell.untold;
      return;
    }
    const auto delay =
        link == 0 ? failing().delay(*wished_, arrived.front()) : arrived.front() - *wished_;
    cell.times.push_back(std::chrono::ceil<milliseconds>(delay));
    if (cell.times.back() > (link == 0 ? allowed_ : at_once)) ++cell.late;
  }

 private:
  [[nodiscard]] StationLink& failing() const { return *railway_.links().front(); }

  /// Often close to one end of the fault.
  milliseconds moment(milliseconds length) {
    auto& chance = railway_.chance;
    const auto end = chance.happens(0.5) ? before : before + length;
    return chance.happens(0.5) ? end + chance.between(-30ms, 30ms)
                               : chance.between(0ms, before + length + after);
  }

  void begin_fault() {
    allowed_ = failing().allowed();
    failing().begin(fault_, victim, railway_.chance);
    allowed_ = std::max(allowed_, failing().allowed());
  }

  void make_wish() {
    wished_ = railway_.clock.now();
    clear_status();
    note_trouble();
    for (const auto& link : railway_.links()) {
      followed_.emplace_back(sigc::connection(
          link->device().signal_link_changed().connect([this] { note_trouble(); })));
    }
    if (wish_ == Wish::emergency_stop) railway_.lok(stopped).set_emergency_stop(true);
    if (wish_ == Wish::power_off) Layout::get().set_track_power(false);
    if (wish_ == Wish::point) LinkedRailway::throw_point(thrown);
  }
  void note_trouble() { told_ = told_ || !railway_.all_in_service(); }

  [[nodiscard]] bool all_arrived() const {
    return std::ranges::none_of(arrivals_, [](const auto& one) { return one.empty(); });
  }

  LinkedRailway railway_;
  LinkFault fault_;
  Wish wish_;
  milliseconds allowed_{};
  std::optional<Clock::time_point> wished_;
  bool told_ = false;
  std::vector<std::vector<Clock::time_point>> arrivals_;
  std::vector<ScopedConnection> followed_;
};

}  // namespace

bool FaultCell::holds(Wish wish) const {
  if (wish == Wish::point) return untold == 0 && repeated == 0;
  return missing == 0 && late == 0;
}

FaultMatrix::FaultMatrix(unsigned times, std::uint64_t seed) {
  for (const auto& setting : settings()) {
    for (const auto fault : link_faults) {
      for (const auto wish : wishes) {
        for (unsigned i = 0; i < times; ++i) {
          Trial trial(setting, fault, wish, seed++);
          trial.run();
          for (std::size_t link = 0; link < setting.rows.size(); ++link) {
            trial.enter(link, cells_[{setting.rows[link], fault, wish}]);
          }
        }
      }
    }
  }
  for (auto& [key, cell] : cells_) std::ranges::sort(cell.times);
}

bool FaultMatrix::holds() const {
  return std::ranges::all_of(
      cells_, [](const auto& entry) { return entry.second.holds(std::get<Wish>(entry.first)); });
}

// --- The table ---

namespace {

void print_cell(const FaultCell& cell, Wish wish, std::ostream& out) {
  out << " | " << cell.times.size() + cell.missing << ": ";
  if (!cell.times.empty()) {
    out << cell.times[cell.times.size() / 2].count() << " / " << cell.times.back().count();
  }
  if (cell.late > 0 && wish != Wish::point) out << ", " << cell.late << " late";
  if (cell.missing > 0) out << ", " << cell.missing << " not sent";
  if (!cell.holds(wish)) out << " **no**";
}

}  // namespace

void FaultMatrix::print(std::ostream& out) const {
  std::string row;
  for (const auto& [key, cell] : cells_) {
    const auto& [whose, fault, wish] = key;
    if (whose != std::exchange(row, whose)) {
      out << "\n"
          << whose << "\n\n| it | emergency stop | power off | point |\n"
          << "| --- | --- | --- | --- |\n";
    }
    if (wish == wishes.front()) out << "| " << title(fault);
    print_cell(cell, wish, out);
    if (wish == wishes.back()) out << " |\n";
  }
}

}  // namespace zemblar::simulator

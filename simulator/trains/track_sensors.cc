#include "simulator/trains/track_sensors.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "runtime/scoped_connection.h"
#include "simulator/trains/track_detector.h"
#include "simulator/trains/train.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto shortest_dropout = 10ms;
constexpr double minute_ms = 60000;
constexpr double model_scale = 87;           // 1:87
constexpr double mm_per_s_to_km_h = 0.0036;  // of the model itself

unsigned scale_speed(const Train& train) {
  return static_cast<unsigned>(train.motion().speed * mm_per_s_to_km_h * model_scale);
}

}  // namespace

/// What is on its way to one input.
struct TrackSensors::Feed {
  struct Report {
    Clock::time_point due;
    bool on;
  };

  explicit Feed(TrackDetector* to) : input(to) {}

  TrackDetector* input;
  int drawing = 0;  // trains
  std::vector<Train*> answering;
  std::size_t next_answer = 0;
  std::deque<Report> reports;  // in the order in which they are delivered
  Timeout delivery;
  Timeout answers;
  Timeout chatter;  // until the next dropout, or its end
  bool dropped_out = false;
  std::optional<Clock::time_point> last_fault;
  ScopedConnection deleted;
};

TrackSensors::TrackSensors(std::uint64_t seed) : chance_(seed) {}

TrackSensors::~TrackSensors() = default;

TrackSensors::Feed& TrackSensors::feed(TrackDetector* input) {
  auto& feed = feeds_[input];
  if (!feed) {
    feed = std::make_unique<Feed>(input);
    feed->deleted = input->signal_ended().connect([this, input] {
      for (auto& [train, seen] : seen_) {
        std::erase(seen.drawing, input);
        if (seen.answering == input) seen.answering = nullptr;
      }
      feeds_.erase(input);
    });
  }
  return *feed;
}

void TrackSensors::update(Train& train, std::vector<TrackDetector*> drawing,
                          TrackDetector* answering) {
  auto& seen = seen_[&train];
  if (seen.answering != answering) {
    if (seen.answering) std::erase(feed(seen.answering).answering, &train);
    seen.answering = answering;
    if (answering) {
      feed(answering).answering.push_back(&train);
      start_answers(feed(answering));
    }
  }
  const auto before = std::exchange(seen.drawing, std::move(drawing));
  const auto now = seen.drawing;
  for (auto* input : now) {
    if (std::ranges::find(before, input) == before.end()) count(input, 1);
    if (train.moving()) start_chatter(feed(input));
  }
  for (auto* input : before) {
    if (std::ranges::find(now, input) == now.end()) count(input, -1);
  }
}

void TrackSensors::count(TrackDetector* input, int change) {
  auto& feed = this->feed(input);
  const bool before = feed.drawing > 0;
  feed.drawing += change;
  const bool now = feed.drawing > 0;
  if (now == before) return;
  if (!feed.dropped_out) report(feed, now);
  if (now) return;
  feed.chatter.cancel();
  feed.dropped_out = false;
}

// --- Occupancy ---

void TrackSensors::report(Feed& feed, bool on) {
  if (chance_.happens(options.missing)) {
    note_fault(feed);
    return;
  }
  auto delay = chance_.between(0ms, options.longest_delay);
  if (chance_.happens(options.late)) {
    note_fault(feed);
    delay += chance_.between(0ms, options.late_by);
  }
  auto due = Clock::now() + delay;
  // One reader tells its inputs' states in order.
  if (!feed.reports.empty()) due = std::max(due, feed.reports.back().due);
  feed.reports.push_back({due, on});
  if (chance_.happens(options.doubled)) {
    note_fault(feed);
    feed.reports.push_back({due + chance_.between(0ms, options.late_by), on});
  }
  if (!feed.delivery.armed()) deliver(feed);
}

// Arms itself for the first report that is not due, and for any at the first call.
void TrackSensors::deliver(Feed& feed) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(feed.reports.front().due - Clock::now());
  feed.delivery = Timeout::once(left, [this, &feed] {
    const bool on = feed.reports.front().on;
    feed.reports.pop_front();
    if (!feed.reports.empty()) deliver(feed);
    // Last: the input may end, and this entry with it.
    feed.input->set_current(on, on ? feed.input->side() : 0);
  });
}

void TrackSensors::start_chatter(Feed& feed) {
  if (options.dropouts_per_minute <= 0 || feed.chatter.armed()) return;
  // Evenly spread around the mean.
  const double mean = minute_ms / options.dropouts_per_minute;
  const auto wait = std::chrono::milliseconds(static_cast<long>(2 * mean * chance_.fraction()));
  feed.chatter = Timeout::once(wait, [this, &feed] { drop_out(feed); });
}

void TrackSensors::drop_out(Feed& feed) {
  feed.dropped_out = true;
  report(feed, false);
  const auto length = chance_.between(shortest_dropout, options.longest_dropout);
  feed.chatter = Timeout::once(length, [this, &feed] {
    feed.dropped_out = false;
    report(feed, feed.drawing > 0);
  });
}

// --- RailCom ---

void TrackSensors::start_answers(Feed& feed) {
  if (feed.answers.armed()) return;
  const auto first = chance_.between(20ms, options.answer_interval);
  feed.answers = Timeout::once(first, [this, &feed] { answer(feed); });
}

// The locomotives are addressed in turn. Where several stand, they talk at once on channel 1, and
// nothing that can be read is left of it.
void TrackSensors::answer(Feed& feed) {
  if (feed.answering.empty()) return;
  feed.answers = Timeout::once(options.answer_interval, [this, &feed] { answer(feed); });
  auto* input = feed.input;
  if (!input->current() || feed.dropped_out) return;
  if (chance_.happens(options.mute)) {
    note_fault(feed);
    return;
  }
  auto& train = *feed.answering[feed.next_answer++ % feed.answering.size()];
  const auto dcc = speed_packet(train.options().address, train.step(), train.wanted_forwards());
  auto bytes = feed.answering.size() == 1 ? train.encoder().channel_1() : std::string();
  bytes += train.encoder().channel_2(scale_speed(train));
  const auto side = orientation ? orientation(train, *input) : 0;
  const auto watched = input->signal_ended().connect([&input] { input = nullptr; });
  ScopedConnection watch(watched);
  input->set_current(true, side);
  if (input) input->receive(dcc, bytes);
}

// --- Faults ---

void TrackSensors::note_fault(Feed& feed) {
  ++faults_;
  feed.last_fault = Clock::now();
}

std::optional<Clock::time_point> TrackSensors::last_fault(const TrackDetector* input) const {
  const auto found = feeds_.find(input);
  return found == feeds_.end() ? std::nullopt : found->second->last_fault;
}

}  // namespace zemblar::simulator

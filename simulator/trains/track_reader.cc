#include "simulator/trains/track_reader.h"

namespace zemblar::simulator {

// --- Input ---

TrackInput::TrackInput() : Glib::ObjectBase("TrackInput"), RailComDetector("Input %1") {
  enter_service();
  signal_deleted().connect([this] { signal_ended().emit(); });
}

void TrackInput::save(YAML::Emitter& /*out*/) const {}

void TrackInput::on_deleting() {
  forgetting_.cancel();
  RailComDetector::on_deleting();
}

void TrackInput::set_current(bool on, unsigned side) {
  const auto alive = liveness();
  set_state(on ? 1 + side : 0);
  if (*alive) forget_later();
}

void TrackInput::receive(std::string_view dcc, std::string_view bytes) {
  const auto alive = liveness();
  hear(dcc, bytes);
  if (*alive) forget_later();
}

void TrackInput::forget_later() {
  const auto due = next_due();
  if (!due || is_deleting()) return forgetting_.cancel();
  forgetting_ = Timeout::once(std::chrono::ceil<std::chrono::milliseconds>(*due - now()), [this] {
    const auto alive = liveness();
    forget_overdue();
    if (*alive) forget_later();
  });
}

// --- Reader ---

TrackReader::TrackReader() : Glib::ObjectBase("TrackReader"), Detector("Reader in Memory %1") {
  enter_service();
}

void TrackReader::save(YAML::Emitter& /*out*/) const {}

TrackInput* TrackReader::add_input() {
  return add(new TrackInput);
}

}  // namespace zemblar::simulator

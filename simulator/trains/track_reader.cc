#include "simulator/trains/track_reader.h"

#include "core/alive_guard.h"
#include "core/layout.h"
#include "devices/default_device.h"
#include "locomotives/lok.h"

namespace zemblar::simulator {

// --- Input ---

TrackInput::TrackInput() : Glib::ObjectBase("TrackInput"), Device("Input %1") {
  enter_service();
  signal_deleted().connect([this] { signal_ended().emit(); });
  decoder_.signal_seen().connect(sigc::mem_fun(*this, &TrackInput::on_seen));
}

void TrackInput::save(YAML::Emitter& /*out*/) const {}

void TrackInput::on_deleting() {
  holding_.cancel();
  ageing_.cancel();
  detections_.clear();
  Device::on_deleting();
}

int TrackInput::supports(std::string_view feature) const {
  return feature == "Occupancy" || feature == "RailCom" ? 2 : 0;
}

bool TrackInput::occupied() const {
  return current_ || holding_.armed() || !detections_.empty();
}

std::vector<Lok*> TrackInput::detected() const {
  std::vector<Lok*> loks;
  for (const auto& [address, detection] : detections_) loks.push_back(detection.lok);
  return loks;
}

void TrackInput::set_current(bool on, unsigned side) {
  if (!on) side = 0;
  if (on == current_ && side == orientation_) return;
  if (on) {
    holding_.cancel();
  } else {
    holding_ = Timeout::once(hold, [this] { signal_changed().emit(); });
  }
  current_ = on;
  orientation_ = side;
  const AliveGuard alive(*this);
  signal_changed().emit();
  if (alive) signal_state_changed().emit();
}

void TrackInput::receive(std::string_view dcc, std::string_view bytes) {
  if (!bytes.empty()) decoder_.decode(dcc, bytes);
}

void TrackInput::on_seen(const Address& address) {
  auto* lok = Layout::get().get_default_device().find_lok(address);
  const auto known = detections_.find(address);
  if (known != detections_.end()) {
    if (known->second.lok == lok) {
      known->second.seen = Clock::now();
      return;
    }
    const AliveGuard alive(*this);
    drop(address);
    if (!alive) return;
  }
  if (!lok || is_deleting()) return;
  auto& detection = detections_[address];
  detection.lok = lok;
  detection.seen = Clock::now();
  detection.deleted =
      lok->signal_deleted().connect([this, address = Address(address)] { drop(address); });
  if (!ageing_.armed()) ageing_ = Timeout::once(memory, [this] { forget_old(); });
  const AliveGuard alive(*this);
  const AliveGuard lok_lives(*lok);
  signal_changed().emit();
  if (alive && lok_lives && !lok->is_deleting()) signal_arrived().emit(lok);
}

void TrackInput::drop(Address address) {
  const auto found = detections_.find(address);
  if (found == detections_.end()) return;
  const AliveGuard alive(*this);
  auto* lok = found->second.lok;
  auto ended = std::move(found->second.deleted);
  detections_.erase(found);
  signal_left().emit(lok);
  if (alive) signal_changed().emit();
}

// What is handled here may end this input, and lets others be seen.
void TrackInput::forget_old() {
  const AliveGuard alive(*this);
  const auto now = Clock::now();
  std::vector<Address> old;
  for (const auto& [address, detection] : detections_) {
    if (now - detection.seen >= memory) old.push_back(address);
  }
  for (const auto address : old) {
    drop(address);
    if (!alive) return;
  }
  if (detections_.empty()) return;
  auto oldest = now;
  for (const auto& [address, detection] : detections_) oldest = std::min(oldest, detection.seen);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(oldest + memory - now);
  ageing_ = Timeout::once(left, [this] { forget_old(); });
}

// --- Reader ---

TrackReader::TrackReader() : Glib::ObjectBase("TrackReader"), Device("Reader in Memory %1") {
  enter_service();
}

void TrackReader::save(YAML::Emitter& /*out*/) const {}

TrackInput* TrackReader::add_input() {
  return add(new TrackInput);
}

int TrackReader::supports(std::string_view feature) const {
  return feature == "Occupancy" || feature == "RailCom" ? 2 : 0;
}

}  // namespace zemblar::simulator

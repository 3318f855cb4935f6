#include "devices/railcom/detector.h"

#include <algorithm>
#include <cassert>

#include "core/layout.h"
#include "devices/default_device.h"

namespace zemblar {

int Detector::supports(std::string_view feature) const {
  return feature == "Occupancy" || feature == "RailCom" ? 2 : 0;
}

RailComDetector::RailComDetector(const Glib::ustring& name_format) : Detector(name_format) {
  decoder_.signal_seen().connect(sigc::mem_fun(*this, &RailComDetector::on_seen));
}

void RailComDetector::on_deleting() {
  detections_.clear();
  Detector::on_deleting();
}

// --- What blocks ask ---

bool RailComDetector::occupied() const {
  return !detections_.empty() || state_ != 0 || free_since_;
}

std::vector<Lok*> RailComDetector::detected() const {
  std::vector<Lok*> loks;
  for (const auto& [address, detection] : detections_) loks.push_back(detection.lok);
  return loks;
}

// --- Current ---

void RailComDetector::set_state(unsigned state) {
  if (state == state_) return;
  state_ = state;
  assert(state_ < 4);
  free_since_.reset();
  if (state_ == 0) free_since_ = now();
  const auto alive = liveness();
  tell(signal_changed());
  if (*alive) tell(signal_state_changed());
}

// --- Locomotives ---

void RailComDetector::hear(std::string_view dcc, std::string_view bytes) {
  if (!bytes.empty()) decoder_.decode(dcc, bytes);
}

Lok* RailComDetector::find_lok_of(Address address) const {
  if (const auto* device = dcc_device()) return device->find_lok(address);
  const auto* known_in = layout();
  return known_in ? known_in->get_default_device().find_lok(address) : nullptr;
}

void RailComDetector::on_seen(const Address& address) {
  auto* lok = find_lok_of(address);
  const auto known = detections_.find(address);
  if (known != detections_.end()) {
    known->second.seen = now();
    if (known->second.lok == lok) return;
    const auto alive = liveness();
    drop(address);
    if (!*alive) return;
    lok = find_lok_of(address);  // a handler may have changed the owner
  }
  if (lok && !is_deleting()) detect(address, lok);
}

void RailComDetector::detect(Address address, Lok* lok) {
  detections_[address] = {
      now(), lok, as_object(*lok).signal_deleted().connect([this, address] { drop(address); })};
  const auto alive = liveness();
  tell(signal_changed());
  if (!*alive) return;
  // A handler may have ended the detection, or told of it already.
  const auto still = detections_.find(address);
  if (still != detections_.end() && still->second.lok == lok) tell(signal_arrived(), lok);
}

void RailComDetector::drop(Address address) {
  const auto found = detections_.find(address);
  if (found == detections_.end()) return;
  const auto alive = liveness();
  const auto dropped = std::move(found->second);
  detections_.erase(found);
  tell(signal_left(), dropped.lok);
  if (*alive) tell(signal_changed());
}

// --- Time ---

void RailComDetector::forget_overdue() {
  const auto alive = liveness();
  if (free_since_ && now() - *free_since_ >= hold) {
    free_since_.reset();
    tell(signal_changed());
  }
  if (*alive) drop_silent();
}

void RailComDetector::drop_silent() {
  std::vector<Address> silent;
  for (const auto& [address, detection] : detections_) {
    if (now() - detection.seen >= memory) silent.push_back(address);
  }
  const auto alive = liveness();
  for (const auto& address : silent) {
    drop(address);
    if (!*alive) return;
  }
}

std::optional<RailComDetector::Time> RailComDetector::next_due() const {
  std::optional<Time> due;
  if (free_since_) due = *free_since_ + hold;
  for (const auto& [address, detection] : detections_) {
    due = std::min(due.value_or(Time::max()), detection.seen + memory);
  }
  return due;
}

}  // namespace zemblar

#include "devices/tessara/device_tessara_railcom_reader_input.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "devices/default_device.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

// Milliseconds.
constexpr unsigned longest_gap = 250;       // in the current of an occupied track
constexpr unsigned longest_silence = 1000;  // of a locomotive that is there
constexpr unsigned long_free = 1001;

/// Takes a copy: a signal that ends inside its own emission would leak its slots.
template <typename Signal, typename... Values>
void tell(const Signal signal, Values... values) {
  signal.emit(values...);
}

}  // namespace

DeviceTessaraRailComReaderInput::DeviceTessaraRailComReaderInput()
    : Glib::ObjectBase("DeviceTessaraRailComReaderInput"),
      Device(_("Input %1")),
      free_time_(long_free) {
  decoder_.signal_seen().connect(sigc::mem_fun(*this, &DeviceTessaraRailComReaderInput::on_seen));
}

DeviceTessaraRailComReaderInput::DeviceTessaraRailComReaderInput(const YAML::Node& node)
    : DeviceTessaraRailComReaderInput() {
  load_identity(node);
}

void DeviceTessaraRailComReaderInput::on_deleting() {
  detections_.clear();
  Device::on_deleting();
}

// --- What blocks ask ---

int DeviceTessaraRailComReaderInput::supports(std::string_view feature) const {
  return feature == "Occupancy" || feature == "RailCom" ? 2 : 0;
}

bool DeviceTessaraRailComReaderInput::occupied() const {
  return !detections_.empty() || state_ != 0 || free_time_ <= longest_gap;
}

unsigned DeviceTessaraRailComReaderInput::orientation() const {
  return state_ > 1 ? state_ - 1 : 0;
}

std::vector<Lok*> DeviceTessaraRailComReaderInput::detected() const {
  std::vector<Lok*> loks;
  for (const auto& [address, detection] : detections_) loks.push_back(detection.lok);
  return loks;
}

// --- What the reader has heard ---

void DeviceTessaraRailComReaderInput::set_state(unsigned state) {
  if (state == state_) return;
  if (state != 0) free_time_ = 0;
  state_ = state;
  assert(state_ < 4);
  const auto alive = liveness();
  tell(signal_changed());
  if (*alive) tell(signal_state_changed());
}

void DeviceTessaraRailComReaderInput::on_packet(const std::string& dcc, const std::string& bytes) {
  std::rotate(packets_.begin(), packets_.end() - 1, packets_.end());
  packets_[0] = bytes;
  decode_newest(dcc);
}

void DeviceTessaraRailComReaderInput::on_repeat(const std::string& dcc, unsigned repeat_nr) {
  assert(repeat_nr && (repeat_nr < 4));
  const auto place = packets_.begin() + repeat_nr;
  std::rotate(packets_.begin(), place - 1, place);
  decode_newest(dcc);
}

// Handlers may let the next answers in, or end this input: the decoder reads a copy.
void DeviceTessaraRailComReaderInput::decode_newest(const std::string& dcc) {
  if (packets_[0].empty()) return;
  const auto bytes = packets_[0];
  decoder_.decode(dcc, bytes);
}

void DeviceTessaraRailComReaderInput::on_seen(const Address& address) {
  auto* lok = find_lok_of(address);
  const auto known = detections_.find(address);
  if (known != detections_.end()) {
    known->second.age = 0;
    if (known->second.lok == lok) return;
    const auto alive = liveness();
    drop(address);
    if (!*alive) return;
    lok = find_lok_of(address);  // a handler may have changed that
  }
  if (lok && !is_deleting()) detect(address, lok);
}

void DeviceTessaraRailComReaderInput::detect(Address address, Lok* lok) {
  detections_[address] = {0, lok,
                          lok->signal_deleted().connect([this, address] { drop(address); })};
  const auto alive = liveness();
  tell(signal_changed());
  if (!*alive) return;
  // Unless a handler has ended it, or has seen to it already.
  const auto still = detections_.find(address);
  if (still != detections_.end() && still->second.lok == lok) tell(signal_arrived(), lok);
}

void DeviceTessaraRailComReaderInput::drop(Address address) {
  const auto found = detections_.find(address);
  if (found == detections_.end()) return;
  const auto alive = liveness();
  const auto dropped = std::move(found->second);
  detections_.erase(found);
  tell(signal_left(), dropped.lok);
  if (*alive) tell(signal_changed());
}

Lok* DeviceTessaraRailComReaderInput::find_lok_of(const Address& address) const {
  const auto* reader = dynamic_cast<const DeviceTessaraRailComReader*>(get_parent());
  if (reader && reader->get_dcc_device()) return reader->get_dcc_device()->find_lok(address);
  const auto* known_in = layout();
  return known_in ? known_in->get_default_device().find_lok(address) : nullptr;
}

// --- Time ---

void DeviceTessaraRailComReaderInput::tick(unsigned ms) {
  const auto alive = liveness();
  if (state_ == 0 && free_time_ <= longest_gap) {
    free_time_ += ms;
    if (free_time_ > longest_gap) tell(signal_changed());
  }
  if (*alive) age_detections(ms);
}

void DeviceTessaraRailComReaderInput::age_detections(unsigned ms) {
  std::vector<Address> old;
  for (auto& [address, detection] : detections_) {
    detection.age += ms;
    if (detection.age > longest_silence) old.push_back(address);
  }
  const auto alive = liveness();
  for (const auto& address : old) {
    drop(address);
    if (!*alive) return;
  }
}

}  // namespace zemblar

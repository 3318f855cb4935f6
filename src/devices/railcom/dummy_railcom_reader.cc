#include "devices/railcom/dummy_railcom_reader.h"

#include <chrono>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "devices/default_device.h"
#include "devices/device_ref.h"
#include "runtime/fiber.h"
#include "runtime/timer.h"

namespace zemblar {
namespace {

constexpr unsigned last_position = DeviceDummyRailComReader::input_count - 1;
constexpr std::chrono::milliseconds step_time{1000};

bool is_set(unsigned pattern, unsigned position) {
  return (pattern >> position & 1u) != 0;
}

}  // namespace

// --- The input ---

DeviceDummyRailComReaderInput::DeviceDummyRailComReaderInput()
    : Glib::ObjectBase("DeviceDummyRailComReaderInput"), Detector(_("Input %1")) {
  enter_service();
}

std::vector<Lok*> DeviceDummyRailComReaderInput::detected() const {
  if (occupied_ && railcom_ && lok_) return {lok_};
  return {};
}

// Handlers may end the input, and the locomotive.

void DeviceDummyRailComReaderInput::set_occupied(bool occupied) {
  if (occupied == occupied_) return;
  const auto alive = liveness();
  occupied_ = occupied;
  if (occupied_ && railcom_ && lok_) tell(signal_left(), lok_);
  if (*alive) tell(signal_changed());
  if (*alive && occupied_ && railcom_ && lok_) tell(signal_arrived(), lok_);
}

void DeviceDummyRailComReaderInput::set_railcom(bool railcom) {
  if (railcom == railcom_) return;
  const auto alive = liveness();
  railcom_ = railcom;
  if (!occupied_) return;
  tell(signal_state_changed());
  if (*alive && lok_) tell(railcom ? signal_arrived() : signal_left(), lok_);
}

void DeviceDummyRailComReaderInput::set_orientation(unsigned orientation) {
  if (orientation == orientation_) return;
  orientation_ = orientation;
  if (railcom_) tell(signal_state_changed());
}

void DeviceDummyRailComReaderInput::set_lok(Lok* lok) {
  if (lok == lok_) return;
  lok_ = lok;
  lok_deleted_ = {};
  if (lok) lok_deleted_ = as_object(*lok).signal_deleted().connect([this] { set_lok(nullptr); });
}

// --- The reader ---

DeviceDummyRailComReader::DeviceDummyRailComReader()
    : Glib::ObjectBase("DeviceDummyRailComReader"), Device(_("Dummy RailCom Reader %1")) {
  using Reader = DeviceDummyRailComReader;
  register_property<std::uint8_t>(this, "pattern", &Reader::get_pattern, &Reader::set_pattern);
  register_property<std::uint8_t>(this, "railcom", &Reader::get_railcom, &Reader::set_railcom);
  register_property<Device*>(this, "dcc-device", &Reader::get_dcc_device, &Reader::set_dcc_device);
  register_property<Address>(this, "address", &Reader::get_address, &Reader::set_address);
  for (unsigned i = 0; i < input_count; ++i) add(new Input);
  enter_service();
  fiber::spawn([this] { simulate(); });
}

void DeviceDummyRailComReader::on_deleting() {
  Device::on_deleting();
  if (sleep_cancel_) sleep_cancel_->cancel();
}

void DeviceDummyRailComReader::set_pattern(std::uint8_t pattern) {
  if (pattern == pattern_) return;
  pattern_ = pattern;
  notify_property(*this, "pattern");
}

void DeviceDummyRailComReader::set_railcom(std::uint8_t railcom) {
  if (railcom == railcom_) return;
  railcom_ = railcom;
  notify_property(*this, "railcom");
}

void DeviceDummyRailComReader::set_dcc_device(Device* device) {
  if (device == dcc_device_) return;
  dcc_device_ = device;
  dcc_device_deleted_ = {};
  if (device) {
    dcc_device_deleted_ = device->signal_deleted().connect([this] { set_dcc_device(nullptr); });
  }
  notify_property(*this, "dcc-device");
}

void DeviceDummyRailComReader::set_address(Address address) {
  if (address == address_) return;
  address_ = address;
  notify_property(*this, "address");
}

// --- The simulation ---

// It ends with the reader, after which it must touch nothing of it.
void DeviceDummyRailComReader::simulate() {
  const auto alive = liveness();
  unsigned phase = 0;
  while (*alive) {
    const bool both =
        for_each_input(phase, [this](Input& input, unsigned i) { occupy(input, i); }) &&
        for_each_input(phase, [this](Input& input, unsigned i) {
          if (!is_set(pattern_, i)) input.set_occupied(false);
        });
    if (!both || !pause()) return;
    phase = (phase + last_position) & last_position;
  }
}

// False when the reader has ended.
bool DeviceDummyRailComReader::pause() {
  const auto cancel = sleep_cancel_ = Gio::Cancellable::create();
  if (!sleep_for(step_time, cancel)) return false;
  sleep_cancel_.reset();
  return true;
}

// Input by input with its position in the patterns. Handlers may end inputs, and the reader: false
// then.
template <typename Step>
bool DeviceDummyRailComReader::for_each_input(unsigned phase, const Step& step) {
  const auto alive = liveness();
  for (unsigned n = 0; n < input_count; ++n) {
    if (auto* input = dynamic_cast<Input*>(child_at(n))) step(*input, (phase + n) & last_position);
    if (!*alive || is_deleting()) return false;
  }
  return true;
}

void DeviceDummyRailComReader::occupy(Input& input, unsigned position) {
  if (!is_set(pattern_, position)) return;
  const DeviceRef told(&input);
  const bool reports = is_set(railcom_, position);
  if (reports) input.set_lok(find_reported());
  input.set_railcom(reports);
  if (told) input.set_occupied(true);
}

Lok* DeviceDummyRailComReader::find_reported() const {
  if (dcc_device_) return dcc_device_->find_lok(address_);
  return Layout::exists() ? Layout::get().get_default_device().find_lok(address_) : nullptr;
}

}  // namespace zemblar

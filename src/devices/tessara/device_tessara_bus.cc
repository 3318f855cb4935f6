#include "devices/tessara/device_tessara_bus.h"

#include <yaml-cpp/yaml.h>

#include <stdexcept>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "devices/device_ref.h"
#include "devices/tessara/tessara_class.h"
#include "devices/tessara/tessara_codec.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto ping_limit = 100ms;
constexpr auto relay_limit = 2s;
constexpr auto monitor_time = 1s;
constexpr int address_count = 256;

const TessaraRegistration<DeviceTessaraBus> registration("BUS", [](DeviceTessara* device) {
  return probe_by_info(device, "BUS");
});

}  // namespace

DeviceTessaraBus::DeviceTessaraBus(DeviceTessaraBus* bus, std::uint8_t address)
    : Glib::ObjectBase("DeviceTessaraBus"), DeviceTessara(_("Tessara Bus %1"), bus, address) {
  register_properties();
}

DeviceTessaraBus::DeviceTessaraBus(const YAML::Node& node, DeviceTessaraBus* bus)
    : Glib::ObjectBase("DeviceTessaraBus"), DeviceTessara(_("Tessara Bus %1"), node, bus) {
  register_properties();
  for (const auto& entry : node["devices"]) {
    const auto* device_class = TessaraClass::find(entry.Tag());
    if (!device_class) throw YAML::RepresentationException(entry.Mark(), "Unknown Tessara device");
    add(device_class->load(entry, this));
  }
}

DeviceTessaraBus::~DeviceTessaraBus() {
  DeviceTessaraBus::on_deleting();
}

void DeviceTessaraBus::register_properties() {
  register_property<bool>(this, "scanning", &DeviceTessaraBus::get_scanning,
                          &DeviceTessaraBus::set_scanning);
  register_property<double>(this, "scan-progress", &DeviceTessaraBus::get_scan_progress);
}

void DeviceTessaraBus::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("device/Tessara/BUS") << YAML::BeginMap;
  save_tessara(out);
  if (!empty()) {
    out << YAML::Key << "devices" << YAML::Value << YAML::BeginSeq;
    for (const auto* device : *this) out << *device;
    out << YAML::EndSeq;
  }
  out << YAML::EndMap;
}

void DeviceTessaraBus::restore(const EntryChange& change) {
  DeviceTessara::restore(change);
  if (!change.differs("devices")) return;
  const auto devices = change.below("devices");
  restore_children(*this, devices.former(), devices.entry(),
                   [this](const YAML::Node& entry, unsigned place) {
                     const auto* device_class = TessaraClass::find(entry.Tag());
                     if (device_class) insert(device_class->load(entry, this), place);
                   });
}

void DeviceTessaraBus::on_deleting() {
  end_scan();
  if (monitor_cancel_) monitor_cancel_->cancel();
  DeviceTessara::on_deleting();
}

bool DeviceTessaraBus::mark_used(std::uint8_t address) {
  const bool was_free = !used_.test(address);
  used_.set(address);
  return was_free;
}

// --- In and out of service ---

bool DeviceTessaraBus::start() {
  return bring_up([this](const std::string& info) { set_up(info); });
}

void DeviceTessaraBus::set_up(const std::string& info) {
  const auto read = tessara::read_bus_info(info);
  if (!read) throw std::runtime_error(_("it is no bus master that this program knows."));
  set_speeds(read->table.speeds);
  speed_scan_ = read->speed_scan;
  max_speed_ = read->max_speed;
  monitor_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = monitor_cancel_] { watch_devices(cancel); });
}

void DeviceTessaraBus::stop() {
  const auto alive = liveness();
  end_scan();
  if (!*alive) return;
  if (monitor_cancel_) monitor_cancel_->cancel();
  monitor_cancel_.reset();
  DeviceTessara::stop();
  const auto devices = device_children<DeviceTessara>(*this);
  for (const auto& device : devices) {
    if (device) device->note_end_of_bus();
    if (device) device->go_out_of_service();
  }
}

// --- Relaying ---

std::string DeviceTessaraBus::relay(std::uint8_t address, const std::string& bytes) {
  const auto alive = liveness();
  const BusyLock lock(this, true);
  bool given_up = false;
  const auto limit = Timeout::once(relay_limit, [this, alive, &given_up] {
    given_up = true;
    if (*alive) cut_exchange();
  });
  tessara::Relay message(address, bytes);
  while (!message.done()) {
    const auto count = tessara::accepted_count(hear(message.frame()));
    if (given_up || !count || !message.accept(*count)) throw TessaraCmdFailed();
  }
  return fetch_answer(given_up);
}

// Sends a message that a connected master always answers with at least one byte.
std::string DeviceTessaraBus::hear(const std::string& message) {
  const auto alive = liveness();
  auto reply = command(message);
  if (reply.empty()) note_silence();
  if (!*alive) throw TessaraCmdFailed();
  return reply;
}

std::string DeviceTessaraBus::fetch_answer(const bool& given_up) {
  using Status = tessara::Fetched::Status;
  std::string answer;
  while (true) {
    const auto reply = command(tessara::fetch());
    const auto fetched = tessara::read_fetched(reply);
    answer += fetched.data;
    if (fetched.status == Status::complete) return answer;
    if (given_up || fetched.status == Status::failed) throw TessaraCmdFailed(answer);
  }
}

std::uint8_t DeviceTessaraBus::get_speed(std::uint8_t address) {
  const BusyLock lock(this, true);
  const auto reply = hear(tessara::ask_speed_of(address));
  if (reply.size() != 1) throw TessaraCmdFailed(reply);
  return static_cast<std::uint8_t>(reply.front());
}

void DeviceTessaraBus::set_speed(std::uint8_t address, std::uint8_t index) {
  const BusyLock lock(this, true);
  const auto reply = command(tessara::set_speed_of(address, index));
  if (!reply.empty()) throw TessaraCmdFailed(reply);
}

bool DeviceTessaraBus::ping(std::uint8_t address) {
  const BusyLock lock(this, true);
  bool too_late = false;
  const auto limit = Timeout::once(ping_limit, [&too_late] { too_late = true; });
  try {
    return ping_once(address, too_late);
  } catch (const TessaraCmdFailed&) {
    return false;
  }
}

// If the answer is no count, the master may not be ready, so the frame is sent again.
bool DeviceTessaraBus::ping_once(std::uint8_t address, const bool& too_late) {
  using Status = tessara::Fetched::Status;
  tessara::Relay message(address, tessara::ask_info());
  while (!message.done()) {
    if (too_late) return false;
    const auto count = tessara::accepted_count(hear(message.frame()));
    if (count && !message.accept(*count)) return false;
  }
  while (!too_late) {
    const auto reply = command(tessara::fetch());
    const auto fetched = tessara::read_fetched(reply);
    if (fetched.status == Status::failed) return false;
    if (fetched.status == Status::complete || !fetched.data.empty()) return true;
  }
  return false;
}

// --- Bringing lost devices back ---

void DeviceTessaraBus::watch_devices(const Cancel& cancel) {
  while (sleep_for(monitor_time, cancel)) {
    const auto devices = device_children<DeviceTessara>(*this);
    for (const auto& device : devices) {
      if (device && !device->active()) bring_back(device);
      if (cancel->is_cancelled()) return;
    }
  }
}

void DeviceTessaraBus::bring_back(const DeviceRef<DeviceTessara>& device) {
  try {
    bool found = device->find_on_bus();
    if (!found && device) found = device->find_at_sent_speed();
    if (!device) return;
    found ? device->set_active(true) : device->note_absence();
  } catch (const std::exception&) {
    // The next iteration tries again.
  }
}

// --- Scanning ---

void DeviceTessaraBus::set_scanning(bool on) {
  if (on == get_scanning() || (on && is_deleting())) return;
  if (!on) return end_scan();
  const auto alive = liveness();
  scan_cancel_ = Gio::Cancellable::create();
  const auto cancel = scan_cancel_;
  show_scan(0);
  if (!*alive || cancel->is_cancelled()) return;
  fiber::spawn([this, cancel] { scan(cancel); });
}

double DeviceTessaraBus::get_scan_progress() const {
  return scan_address_ < 0 ? 0 : static_cast<double>(scan_address_) / address_count;
}

void DeviceTessaraBus::show_scan(int address) {
  const auto alive = liveness();
  const bool was_scanning = get_scanning();
  scan_address_ = address;
  if (was_scanning != get_scanning()) notify_property(*this, "scanning");
  if (*alive) notify_property(*this, "scan-progress");
}

void DeviceTessaraBus::end_scan() {
  if (!scan_cancel_) return;
  std::exchange(scan_cancel_, {})->cancel();
  show_scan(-1);
}

// Checks `cancel` after each step, because another scan may have begun meanwhile.
void DeviceTessaraBus::scan(const Cancel& cancel) {
  const auto alive = liveness();
  for (int address = 0; address < address_count; ++address) {
    show_scan(address);
    if (cancel->is_cancelled()) return;
    look_at(static_cast<std::uint8_t>(address), cancel);
    if (cancel->is_cancelled()) return;
    if (!active()) break;
  }
  if (*alive) end_scan();
}

void DeviceTessaraBus::look_at(std::uint8_t address, const Cancel& cancel) {
  if (used_.test(address) || joining_.test(address)) return;
  try {
    const bool found =
        speed_scan_ ? find_at_known_speed(address, cancel) : find_at_any_speed(address, cancel);
    if (found && !cancel->is_cancelled()) add_found(address);
  } catch (const std::exception&) {
    // There is no device at the address.
  }
}

bool DeviceTessaraBus::find_at_any_speed(std::uint8_t address, const Cancel& cancel) {
  for (unsigned speed = 0; speed <= max_speed_; ++speed) {
    set_speed(address, static_cast<std::uint8_t>(speed));
    if (cancel->is_cancelled()) return false;
    const bool found = ping(address);
    if (found || cancel->is_cancelled()) return found;
  }
  return false;
}

bool DeviceTessaraBus::find_at_known_speed(std::uint8_t address, const Cancel& cancel) {
  const bool found = ping(address);
  if (found || cancel->is_cancelled()) return found;
  const auto speed = get_speed(address);
  if (speed == 0 || cancel->is_cancelled()) return false;
  set_speed(address, 0);
  return !cancel->is_cancelled() && ping(address);
}

// Continues even if the scan ends meanwhile. `joining_` keeps a new scan from interfering with the
// device.
void DeviceTessaraBus::add_found(std::uint8_t address) {
  const auto alive = liveness();
  DetachedPtr<DeviceTessara> device;
  joining_.set(address);
  try {
    device.reset(TessaraClass::create_found(this, address));
  } catch (const std::exception&) {
    // The program does not support the device.
  }
  if (!*alive) return;
  joining_.reset(address);
  if (device && !is_deleting()) add(device.release());
}

}  // namespace zemblar

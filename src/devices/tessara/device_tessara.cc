#include "devices/tessara/device_tessara.h"

#include <yaml-cpp/yaml.h>

#include <cassert>
#include <stdexcept>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/serial_port_tessara.h"
#include "devices/tessara/tessara_class.h"
#include "devices/tessara/tessara_codec.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto retry_time = 1s;

std::uint8_t read_address(const YAML::Node& node) {
  unsigned address = 0;
  read_key(node, "address", address);
  if (address > 255) throw YAML::InvalidScalar(node["address"].Mark());
  return static_cast<std::uint8_t>(address);
}

}  // namespace

DeviceTessara::DeviceTessara(DeviceTessaraBus* bus, std::uint8_t address)
    : Glib::ObjectBase("DeviceTessara"), Device("Tessara Device %1"), bus_(bus), address_(address) {
  find_place();
}

DeviceTessara::DeviceTessara(const Glib::ustring& name_format, DeviceTessaraBus* bus,
                             std::uint8_t address)
    : Device(name_format), bus_(bus), address_(address) {
  find_place();
}

void DeviceTessara::find_place() {
  register_properties();
  if (bus_) {
    bus_deleted_ = bus_->signal_deleted().connect([this] { bus_ = nullptr; });
  } else {
    wait_for_hardware();
  }
}

DeviceTessara::DeviceTessara(const Glib::ustring& name_format, const YAML::Node& node,
                             DeviceTessaraBus* bus)
    : DeviceTessara(name_format, bus, bus ? read_address(node) : std::uint8_t{0}) {
  if (!bus && node["address"]) throw std::runtime_error("Parent is not an Tessara Bus");
  load_identity(node);
  if (node["serial-nr"]) serial_nr_ = read_bytes(node["serial-nr"]);
  if (bus) has_marked_address_ = bus->mark_used(address_);
  note_origin();
}

DeviceTessara::~DeviceTessara() {
  DeviceTessara::on_deleting();
}

void DeviceTessara::save_tessara(YAML::Emitter& out) const {
  save_identity(out);
  if (bus_) out << YAML::Key << "address" << YAML::Value << static_cast<unsigned>(address_);
  out << YAML::Key << "serial-nr" << YAML::Value;
  write_bytes(out, serial_nr_);
}

void DeviceTessara::on_deleting() {
  attached_.disconnect();
  Device::on_deleting();
  retry_.cancel();
  cut_exchange();
  hold_.let_go();
  if (bus_ && std::exchange(has_marked_address_, false)) bus_->clear_used(address_);
}

void DeviceTessara::register_properties() {
  register_property<std::uint8_t>(this, "address", &DeviceTessara::get_address,
                                  &DeviceTessara::set_address);
  register_property<Device*>(this, "bus", &DeviceTessara::get_bus_device);
}

Device* DeviceTessara::get_bus_device() const {
  return bus_;
}

void DeviceTessara::set_address(std::uint8_t address) {
  if (!bus_ || address == address_ || !bus_->mark_used(address)) return;
  before_change();
  if (has_marked_address_) bus_->clear_used(address_);
  has_marked_address_ = true;
  address_ = address;
  notify_property(*this, "address");
}

void DeviceTessara::restore(const EntryChange& change) {
  Device::restore(change);
  if (bus_ && change.differs("address")) set_address(read_address(change.entry()));
}

// --- Hardware comes and goes ---

void DeviceTessara::wait_for_hardware() {
  attached_ = sigc::connection(
      SerialPortTessara::signal_attached().connect(sigc::mem_fun(*this, &DeviceTessara::claim)));
}

// Called from a signal's emission, during which the slot may be disconnected.
bool DeviceTessara::claim(SerialPort* port) {
  if (hold_ || serial_nr_.empty() || is_deleting()) return false;
  const auto alive = liveness();
  const auto found = serial_nr_on(port);
  if (!*alive || is_deleting() || found != serial_nr_) return false;
  if (!hold_.take(port, [this] { lose_port(); })) return false;
  set_link_down({});
  if (!*alive) return true;
  // If an older conversation has not ended yet, its end tries again.
  set_active(true);
  return true;
}

void DeviceTessara::come_up_on(SerialPort* port) {
  if (!hold_.take(port, [this] { lose_port(); })) throw TessaraCmdFailed();
  come_up();
}

void DeviceTessara::come_up_on_bus() {
  const auto alive = liveness();
  const bool found = find_on_bus();
  if (!*alive || !bus_) throw DeviceInactiveException();
  if (!found) throw std::runtime_error("No Device");
  has_marked_address_ = bus_->mark_used(address_);
  come_up();
}

// Waits for `start` to end, by taking the lock.
void DeviceTessara::come_up() {
  const auto alive = liveness();
  set_active(true);
  try {
    const BusyLock started(this, true);
  } catch (const DeviceInactiveException&) {
    if (*alive && !fault_.empty()) throw std::runtime_error(fault_);
    throw;
  }
}

// Does not call set_active, because a running `start` notices the loss of the port itself.
void DeviceTessara::lose_port() {
  const auto alive = liveness();
  retry_.cancel();
  cut_exchange();
  hold_.let_go();
  const auto phase = was_in_service() ? LinkPhase::lost : LinkPhase::looking_for_hardware;
  set_link(phase, get_parent() ? why_not_plugged_in() : Glib::ustring());
  if (*alive) go_out_of_service();
}

void DeviceTessara::try_again() {
  if (hold_ && !is_deleting()) retry_ = Timeout::once(retry_time, [this] { set_active(true); });
}

void DeviceTessara::give_up(const Glib::ustring& why) {
  const auto alive = liveness();
  report_down(why);
  if (*alive) go_out_of_service();
  if (*alive) try_again();
}

// --- In and out of service ---

bool DeviceTessara::start() {
  const auto port = hold_.port();
  if (!port) return bus_ != nullptr;
  const auto alive = liveness();
  cancel_ = Gio::Cancellable::create();
  try {
    port->open(cancel_);
  } catch (const Gio::Error& error) {
    if (*alive) report_down(why_not_opened(get_name(), *port.operator->(), error));
    throw;
  }
  port->set_dtr(false);
  return *alive;
}

bool DeviceTessara::bring_up(const std::function<void(const std::string& info)>& set_up) {
  const auto alive = liveness();
  fault_.clear();
  const auto phase = link_state().phase;
  if (!was_in_service() && phase != LinkPhase::connecting) set_link(LinkPhase::connecting);
  try {
    if (!*alive || !DeviceTessara::start()) return false;
    const auto info = ask(tessara::ask_info());
    const auto serial_nr = identify(info);
    set_up(info);
    if (!*alive) return false;
    serial_nr_ = serial_nr;
    return true;
  } catch (const std::runtime_error& error) {
    if (!*alive) return false;
    fault_ = error.what();
    report_down(Glib::ustring::compose(_("%1 stays out of service: %2"), get_name(), fault_));
  } catch (const TessaraCmdFailed& failure) {
    if (*alive) note_failed_start(failure);
  } catch (...) {
    // The reason has been reported where the error arose, or the bus has ended.
  }
  if (*alive) try_again();
  return false;
}

// Missing hardware does not drive the line, which reads as an answer of no bytes.
std::string DeviceTessara::ask(const std::string& question) {
  auto answer = command(question);
  if (answer.empty()) throw TessaraCmdFailed();
  return answer;
}

// Messages have no check sum, so noise can become part of an answer. A device without a number
// takes the answer permanently, so it asks twice.
std::string DeviceTessara::identify(const std::string& info) {
  auto serial_nr = ask(tessara::ask_serial());
  if (serial_nr_.empty()) {
    confirm(tessara::ask_info(), info);
    confirm(tessara::ask_serial(), serial_nr);
  } else if (serial_nr != serial_nr_) {
    throw std::runtime_error(_("Another device is in its place."));
  }
  return serial_nr;
}

void DeviceTessara::confirm(const std::string& question, const std::string& answer) {
  if (ask(question) != answer) throw std::runtime_error(_("Its answer is not the same twice."));
}

void DeviceTessara::stop() {
  silent_since_.reset();
  retry_.cancel();
  cut_exchange();
  if (hold_) hold_.port()->close();
}

// --- What every device understands ---

std::string DeviceTessara::command(const std::string& bytes) {
  assert(busy());
  if (!active()) throw TessaraCmdFailed();
  cancel_ = Gio::Cancellable::create();
  if (!bus_) return exchange(bytes);
  const auto alive = liveness();
  const auto late = when_answer_is_late();
  auto answer = bus_->relay(address_, bytes);
  // The device may have ended while the bus relayed the message.
  if (*alive) note_answer();
  if (!*alive) throw TessaraCmdFailed(answer);
  return answer;
}

std::string DeviceTessara::read_info() {
  const BusyLock lock(this, true);
  return command(tessara::ask_info());
}

std::string DeviceTessara::read_serial() {
  const BusyLock lock(this, true);
  return command(tessara::ask_serial());
}

void DeviceTessara::set_speed(std::uint8_t index) {
  if (!bus_) return;
  const BusyLock lock(this, true);
  change_speed(index);
}

void DeviceTessara::change_speed(std::uint8_t index) {
  if (!bus_) return;
  const auto alive = liveness();
  sent_speed_ = index;
  command(tessara::use_speed(index));
  if (!*alive || !bus_) throw TessaraCmdFailed();
  bus_->set_speed(address_, index);
}

bool DeviceTessara::find_on_bus() {
  const auto alive = liveness();
  const auto lost = [&] { return !*alive || !bus_; };
  if (lost()) return false;
  const auto address = address_;
  if (bus_->ping(address)) return true;
  if (lost()) return false;
  const auto speed = bus_->get_speed(address);
  if (speed == 0 || lost()) return false;
  return find_at_speed(0, speed);
}

// A failed exchange may have changed the speed on one side only.
bool DeviceTessara::find_at_sent_speed() {
  if (!bus_ || sent_speed_ == 0) return false;
  const auto alive = liveness();
  const auto speed = bus_->get_speed(address_);
  if (!*alive || !bus_ || speed == sent_speed_) return false;
  return find_at_speed(sent_speed_, speed);
}

bool DeviceTessara::find_at_speed(std::uint8_t index, std::uint8_t former) {
  const auto alive = liveness();
  const auto lost = [&] { return !*alive || !bus_; };
  const auto address = address_;
  bus_->set_speed(address, index);
  if (lost()) return false;
  if (bus_->ping(address)) return true;
  if (!lost()) bus_->set_speed(address, former);
  return false;
}

// --- One exchange on the port ---

std::string DeviceTessara::exchange(const std::string& bytes) {
  const auto alive = liveness();
  const auto port = hold_.port();
  const auto goes_on = [this, alive, port] { return *alive && active() && hold_.port() == port; };
  if (!port) throw TessaraCmdFailed();
  TessaraExchange exchange(*port.operator->(), cancel_, goes_on);
  try {
    auto answer = exchange.run(bytes);
    if (!answer.empty()) note_answer();
    if (*alive) return answer;
  } catch (const TessaraNoEnd&) {
    if (*alive && !activating()) set_link(LinkPhase::waiting_for_answer, why_no_end());
    throw;
  } catch (const Gio::Error&) {
    if (*alive && hold_.port() == port) lose_line(*port.operator->());
  }
  throw TessaraCmdFailed(exchange.received());
}

// The port has failed, so retrying would fail immediately, without a pause.
void DeviceTessara::lose_line(SerialPort& port) {
  port.close();
  give_up(Glib::ustring::compose(_("%1 has lost its port %2, and tries to get it back."),
                                 get_name(), port.port_name));
}

}  // namespace zemblar

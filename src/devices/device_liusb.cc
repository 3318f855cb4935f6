#include "devices/device_liusb.h"

#include <giomm/error.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <cerrno>
#include <stdexcept>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/status.h"
#include "core/yaml_io.h"
#include "devices/default_device.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto answer_time = 750ms;
constexpr auto retry_time = 1s;

const DocumentClass::Registration registration(document_class<LIUSB>("!device/Lenz/LI-USB",
                                                                     Section::devices));

Glib::RefPtr<SerialPortLIUSB> hold(SerialPortLIUSB* port) {
  port->reference();
  return Glib::RefPtr<SerialPortLIUSB>(port);
}

}  // namespace

LIUSB::LIUSB() : Glib::ObjectBase("DeviceLIUSB"), Device(_("Lenz LI-USB %1")) {
  register_property<bool>(this, "enable-default", &LIUSB::get_use_as_default,
                          &LIUSB::set_use_as_default);
  wait_for_hardware();
}

LIUSB::LIUSB(const YAML::Node& node) : LIUSB() {
  load_identity(node);
  node["use-as-default"] >> use_as_default_;
}

LIUSB::~LIUSB() {
  LIUSB::on_deleting();
}

void LIUSB::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("device/Lenz/LI-USB") << YAML::BeginMap;
  save_identity(out);
  out << YAML::Key << "use-as-default" << YAML::Value << use_as_default_;
  out << YAML::EndMap;
}

void LIUSB::on_deleting() {
  attached_.disconnect();
  take_back_what_was_told();
  leave_default();
  Device::on_deleting();
  let_go_of_port();
}

// --- As a default device ---

void LIUSB::set_use_as_default(bool on) {
  if (on == use_as_default_) return;
  use_as_default_ = on;
  on ? join_default() : leave_default();
  notify_property(*this, "enable-default");
  // Those whom nobody served until now.
  if (on && active()) signal_in_service().emit(*this);
}

void LIUSB::join_default() {
  if (auto* device = default_device()) device->add_device(this);
}

void LIUSB::leave_default() {
  if (auto* device = default_device()) device->remove_device(this);
}

int LIUSB::supports(std::string_view feature) const {
  if (feature == "DCC/Power") return 2;
  return feature == "DCC" || feature.starts_with("DCC/") ? 1 : 0;
}

// --- Hardware comes and goes ---

void LIUSB::wait_for_hardware() {
  attached_ =
      sigc::connection(SerialPortLIUSB::signal_attached().connect([this](SerialPort* offered) {
        auto* port = dynamic_cast<SerialPortLIUSB*>(offered);
        return port && attach(port);
      }));
}

bool LIUSB::attach(SerialPortLIUSB* port) {
  if (port_ || is_deleting()) return false;
  port_ = hold(port);
  port->set_held(true);
  removed_ = sigc::connection(port->signal_removed().connect([this] { lose_port(); }));
  // While an older conversation still winds up, its end tries again.
  set_active(true);
  return true;
}

void LIUSB::let_go_of_port() {
  retry_.cancel();
  cancel_->cancel();
  removed_.disconnect();
  const auto port = port_;
  port_.reset();
  if (!port) return;
  port->close();
  port->set_held(false);
}

// Not by set_active: a `start` that is still running finds by itself that the port has gone.
void LIUSB::lose_port() {
  take_back_what_was_told();
  let_go_of_port();
  go_out_of_service();
}

void LIUSB::try_again(const Port& tried) {
  if (!port_ || is_deleting()) return;
  const auto pause = port_ == tried ? retry_time : 0ms;
  retry_ = Timeout::once(pause, [this] { set_active(true); });
}

// --- In and out of service ---

bool LIUSB::start() {
  const auto alive = liveness();
  const auto port = port_;
  if (!port) return false;
  try {
    open_port(port);
    if (!*alive) return false;
    greet();
    read_status();
    if (use_as_default_) join_default();
    return true;
  } catch (...) {
    // Told where it arose.
  }
  if (*alive) try_again(port);
  return false;
}

void LIUSB::stop() {
  const auto alive = liveness();
  const auto port = port_;
  if (use_as_default_) leave_default();
  retry_.cancel();
  cancel_->cancel();
  if (*alive && port) port->close();
}

void LIUSB::open_port(const Port& port) {
  const auto alive = liveness();
  port->set_baud(57600);
  port->set_flow(Flow::Hard);
  cancel_ = Gio::Cancellable::create();
  try {
    port->open(cancel_);
  } catch (const Gio::Error& error) {
    if (!*alive) throw;
    tell(Glib::ustring::compose(
        error.code() == EACCES
            ? _("%1 may not use the port %2. Join the group that owns it, often “dialout”.")
            : _("%1 cannot open the port %2: is another program using it?"),
        get_name(), port->port_name));
    throw;
  }
}

void LIUSB::greet() {
  const auto buf = exchange(liusb::interface_version);
  const auto refuse = [this](const char* reason) {
    tell(Glib::ustring::compose(
        _("%1: what is connected to the port does not answer as a LI-USB does (%2)."), get_name(),
        reason));
    throw std::runtime_error(reason);
  };
  if (buf.size() != 3) refuse("buf.size() != 3");
  if (buf[0] != 0x02) refuse("buf[0] != 0x02");
}

void LIUSB::read_status() {
  const auto status = liusb::read_status(exchange(liusb::station_status));
  if (!status) return;
  if (status->wants_start_mode) exchange(liusb::start_mode);
  status->power ? track_power_is_on() : track_power_is_off();
}

// --- One exchange ---

void LIUSB::require_service(const Port& port) const {
  if (!active() || port_ != port) throw DeviceInactiveException();
}

/// One request and its answer. Only inside a BusyLock.
liusb::Bytes LIUSB::exchange(const liusb::Bytes& message) {
  const auto alive = liveness();
  const auto port = port_;
  if (!port) throw DeviceInactiveException();
  bool timed_out = false;
  cancel_ = Gio::Cancellable::create();
  const auto limit = Timeout::once(answer_time, [&timed_out, cancel = cancel_] {
    timed_out = true;
    cancel->cancel();
  });
  try {
    auto answer = talk(port, message);
    take_back_what_was_told();
    return answer;
  } catch (const Gio::Error& error) {
    if (!*alive) throw DeviceInactiveException();
    if (timed_out) {
      tell(Glib::ustring::compose(
          _("%1 does not answer: is the command station switched on and connected?"), get_name()));
      throw DeviceInactiveException();
    }
    if (error.code() == Gio::Error::CANCELLED || port_ != port) throw;
    // Nothing goes over this port any more, and trying would not take time.
    lose_port();
    if (*alive) {
      tell(Glib::ustring::compose(_("%1 lost its port %2: plug it out and in again."), get_name(),
                                  port->port_name));
    }
    throw;
  }
}

liusb::Bytes LIUSB::talk(const Port& port, const liusb::Bytes& message) {
  const auto alive = liveness();
  const auto cancel = cancel_;
  const auto check = [&] {
    if (!*alive) throw DeviceInactiveException();
    require_service(port);
  };
  check();
  // The answer to a request that was given up would pass for the answer to this one.
  port->discard_input();
  const auto request = liusb::frame(message);
  for (std::size_t sent = 0; sent < request.size();) {
    sent += port->write(request.data() + sent, request.size() - sent, cancel);
    check();
  }
  liusb::AnswerReader reader;
  std::array<std::uint8_t, liusb::max_frame> buffer;
  while (true) {
    if (auto answer = reader.next()) return *std::move(answer);
    const auto count = port->read(buffer.data(), buffer.size(), cancel);
    check();
    if (count == 0) throw DeviceInactiveException();
    reader.add({buffer.data(), count});
  }
}

// Once for each trouble.
void LIUSB::tell(const Glib::ustring& message) {
  if (told_.raw() == message.raw()) return;
  told_ = message;
  set_status(message);
}

void LIUSB::take_back_what_was_told() {
  if (!told_.empty() && get_status().raw() == told_.raw()) clear_status();
  told_.clear();
}

// --- What the railway asks for ---

void LIUSB::power_on() {
  BusyLock lock(this, true);
  exchange(liusb::power_on);
  track_power_is_on();
}

void LIUSB::power_off() {
  BusyLock lock(this, true);
  exchange(liusb::power_off);
  track_power_is_off();
}

bool LIUSB::reaches(const DrivenDecoder& decoder) {
  const auto address = decoder.get_address();
  if (liusb::can_drive(address)) return true;
  const auto message = Glib::ustring::compose(
      _("%1 cannot drive a locomotive with the %2 address %3: it has short addresses from 1 to 99 "
        "and long ones from 100 to 9999. Give the decoder another address or another device."),
      get_name(), address.is_long() ? _("long") : _("short"), address.get_addr());
  if (get_status().raw() != message.raw()) set_status(message);
  return false;
}

void LIUSB::update_speed(DrivenDecoder* decoder) {
  drive(decoder);
}

void LIUSB::update_direction(DrivenDecoder* decoder) {
  drive(decoder);
}

// Values and address are read only when the device is free: others may have gone first, and the
// newest wish is the one to send.

void LIUSB::drive(DrivenDecoder* decoder) {
  DecoderTask task(this, decoder);
  if (!task.leads()) return;
  BusyLock lock(this, true);
  if (!reaches(*decoder)) return;
  auto sent = decoder->state();
  sent.mask = DecoderUpdate::speed_bit | DecoderUpdate::direction_bit;
  exchange(liusb::drive(decoder->get_address(), decoder->get_type(), sent.speed, sent.direction));
  task.finish(sent);
}

void LIUSB::update_function(DrivenDecoder* decoder, unsigned fn) {
  DecoderTask task(this, decoder);
  if (!task.leads()) return;
  BusyLock lock(this, true);
  if (!reaches(*decoder)) return;
  const auto& group = liusb::group_of(fn);
  auto sent = decoder->state();
  sent.mask = group.mask();
  exchange(liusb::set_functions(decoder->get_address(), group, sent.functions));
  task.finish(sent);
}

void LIUSB::set_point(unsigned address, unsigned output, bool on) {
  if (!liusb::can_switch(address) || output < 1 || output > 4) {
    return set_status(Glib::ustring::compose(
        _("%1 cannot switch output %2 of the accessory decoder %3: it has decoders from 1 to 256 "
          "with four outputs each."),
        get_name(), output, address));
  }
  BusyLock lock(this, true);
  switch_coil(liusb::energise(address, output, on));
  switch_coil(liusb::release(address, output, on));
}

void LIUSB::switch_coil(const liusb::Bytes& message) {
  if (liusb::is_done(exchange(message))) return;
  set_status(Glib::ustring::compose(
      _("%1: the station did not switch accessory decoder %2. Is the track power on?"), get_name(),
      message[1] + 1));
  throw std::runtime_error("LIUSB::set_point failed");
}

}  // namespace zemblar

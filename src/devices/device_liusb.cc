#include "devices/device_liusb.h"

#include <giomm/error.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <stdexcept>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto answer_time = 750ms;
constexpr auto retry_time = 1s;

const DocumentClass::Registration registration(document_class<LIUSB>("!device/Lenz/LI-USB",
                                                                     Section::devices));

}  // namespace

LIUSB::LIUSB()
    : Glib::ObjectBase("DeviceLIUSB"), CommandStation(_("Lenz LI-USB %1"), "enable-default") {
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
  trouble_.take_back();
  CommandStation::on_deleting();
  let_go_of_port();
}

// --- Hardware comes and goes ---

void LIUSB::wait_for_hardware() {
  attached_ = sigc::connection(
      SerialPortLIUSB::signal_attached().connect(sigc::mem_fun(*this, &LIUSB::attach)));
}

bool LIUSB::attach(SerialPort* port) {
  if (is_deleting() || !hold_.take(port, [this] { lose_port(); })) return false;
  // While an older conversation still winds up, its end tries again.
  set_active(true);
  return true;
}

void LIUSB::let_go_of_port() {
  retry_.cancel();
  cancel_->cancel();
  hold_.let_go();
}

// Not by set_active: a `start` that is still running finds by itself that the port has gone.
void LIUSB::lose_port() {
  trouble_.take_back();
  let_go_of_port();
  go_out_of_service();
}

void LIUSB::try_again(const Port& tried) {
  if (!hold_ || is_deleting()) return;
  const auto pause = hold_.port() == tried ? retry_time : 0ms;
  retry_ = Timeout::once(pause, [this] { set_active(true); });
}

// --- In and out of service ---

bool LIUSB::start() {
  const auto alive = liveness();
  const auto port = hold_.port();
  if (!port) return false;
  try {
    open_port(port);
    if (!*alive) return false;
    greet();
    read_status();
    join_default();
    return true;
  } catch (...) {
    // Told where it arose.
  }
  if (*alive) try_again(port);
  return false;
}

void LIUSB::stop() {
  const auto alive = liveness();
  const auto port = hold_.port();
  leave_default();
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
    trouble_.tell(why_not_opened(get_name(), *port.operator->(), error));
    throw;
  }
}

void LIUSB::greet() {
  const auto buf = exchange(liusb::interface_version);
  const auto refuse = [this](const char* reason) {
    trouble_.tell(Glib::ustring::compose(
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
  if (!active() || hold_.port() != port) throw DeviceInactiveException();
}

/// One request and its answer. Only inside a BusyLock.
liusb::Bytes LIUSB::exchange(const liusb::Bytes& message) {
  const auto alive = liveness();
  const auto port = hold_.port();
  if (!port) throw DeviceInactiveException();
  bool timed_out = false;
  cancel_ = Gio::Cancellable::create();
  const auto limit = Timeout::once(answer_time, [&timed_out, cancel = cancel_] {
    timed_out = true;
    cancel->cancel();
  });
  try {
    auto answer = talk(port, message);
    trouble_.take_back();
    return answer;
  } catch (const Gio::Error& error) {
    if (!*alive) throw DeviceInactiveException();
    if (timed_out) {
      trouble_.tell(Glib::ustring::compose(
          _("%1 does not answer: is the command station switched on and connected?"), get_name()));
      throw DeviceInactiveException();
    }
    if (error.code() == Gio::Error::CANCELLED || hold_.port() != port) throw;
    // Nothing goes over this port any more, and trying would not take time.
    lose_port();
    if (*alive) {
      trouble_.tell(Glib::ustring::compose(_("%1 lost its port %2: plug it out and in again."),
                                           get_name(), port->port_name));
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

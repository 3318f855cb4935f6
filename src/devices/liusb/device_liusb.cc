#include "devices/liusb/device_liusb.h"

#include <giomm/error.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <stdexcept>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "runtime/fiber.h"

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
  set_link(LinkPhase::looking_for_hardware, not_plugged_in());
}

LIUSB::LIUSB(const YAML::Node& node) : LIUSB() {
  load_identity(node);
  read_key(node, "use-as-default", use_as_default_);
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
  set_link(LinkPhase::connecting);
  // If an older conversation has not ended yet, its end tries again.
  set_active(true);
  return true;
}

void LIUSB::let_go_of_port() {
  retry_.cancel();
  cancel_->cancel();
  hold_.let_go();
}

// Does not call set_active, because a running `start` notices the loss of the port itself.
void LIUSB::lose_port() {
  const auto alive = liveness();
  const bool was_there = link_state().phase != LinkPhase::connecting;
  set_link(was_there ? LinkPhase::lost : LinkPhase::looking_for_hardware, not_plugged_in());
  if (!*alive) return;
  let_go_of_port();
  go_out_of_service();
}

Glib::ustring LIUSB::not_plugged_in() const {
  return Glib::ustring::compose(_("%1 is not plugged in."), get_name());
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
    // The reason has been reported where the error arose.
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
    set_link_down(why_not_opened(get_name(), *port.operator->(), error));
    throw;
  }
}

void LIUSB::greet() {
  const auto buf = exchange(liusb::interface_version);
  const auto refuse = [this](const char* reason) {
    set_link_down(Glib::ustring::compose(
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

/// Sends one request and returns its answer; only inside a BusyLock. `power` is the track power
/// that the request asks for: a station may confirm it by a broadcast only, without an answer.
liusb::Bytes LIUSB::exchange(const liusb::Bytes& message, std::optional<bool> power) {
  const auto alive = liveness();
  const auto port = hold_.port();
  if (!port) throw DeviceInactiveException();
  bool timed_out = false;
  power_heard_.reset();
  cancel_ = Gio::Cancellable::create();
  const auto limit = Timeout::once(answer_time, [&timed_out, cancel = cancel_] {
    timed_out = true;
    cancel->cancel();
  });
  try {
    auto answer = talk(port, message);
    note_answer();
    if (!*alive) throw DeviceInactiveException();
    return answer;
  } catch (const Gio::Error& error) {
    if (!*alive) throw DeviceInactiveException();
    if (timed_out) {
      if (power && power_heard_ == power) return {};
      note_silence();
      throw DeviceInactiveException();
    }
    // ENODEV, the error of a removed device, has the same number as the toolkit's code for a
    // cancelled operation.
    const bool was_cancelled = error.code() == Gio::Error::CANCELLED && !port->is_lost();
    if (was_cancelled || hold_.port() != port) throw;
    // The port has failed, so retrying would fail immediately, without a pause.
    lose_port();
    if (*alive) {
      set_link(LinkPhase::lost,
               Glib::ustring::compose(
                   _("%1 lost its port %2: look at its plug. It is tried again by itself."),
                   get_name(), port->port_name));
    }
    throw;
  }
}

void LIUSB::note_answer() {
  if (!activating()) set_link(LinkPhase::in_service);
}

void LIUSB::note_silence() {
  const auto why = Glib::ustring::compose(
      _("%1 does not answer: is the command station switched on and connected?"), get_name());
  if (activating()) return set_link_down(why);
  retry_ = Timeout::once(retry_time, [this] { fiber::spawn([this] { ask_for_life(); }); });
  set_link(LinkPhase::waiting_for_answer, why);
}

// Other requests meanwhile postpone it if they are not answered, and end it if they are.
void LIUSB::ask_for_life() {
  if (link_state().phase != LinkPhase::waiting_for_answer) return;
  converse([this] { read_status(); });
}

liusb::Bytes LIUSB::talk(const Port& port, const liusb::Bytes& message) {
  const auto alive = liveness();
  const auto cancel = cancel_;
  const auto check = [&] {
    if (!*alive) throw DeviceInactiveException();
    require_service(port);
  };
  check();
  // Drops a late answer to an earlier request, which would be taken for the answer to this one.
  port->discard_input();
  const auto request = liusb::frame(message);
  for (std::size_t sent = 0; sent < request.size();) {
    sent += port->write(request.data() + sent, request.size() - sent, cancel);
    check();
  }
  liusb::AnswerReader reader;
  std::array<std::uint8_t, liusb::max_frame> buffer;
  while (true) {
    auto answer = reader.next();
    if (const auto power = reader.take_power()) {
      follow_power(*power);
      check();
    }
    if (answer) return *std::move(answer);
    const auto count = port->read(buffer.data(), buffer.size(), cancel);
    check();
    if (count == 0) throw DeviceInactiveException();
    reader.add({buffer.data(), count});
  }
}

// --- What the railway asks for ---

void LIUSB::switch_power(bool on) {
  const auto alive = liveness();
  exchange(on ? liusb::power_on : liusb::power_off, on);
  if (*alive) on ? track_power_is_on() : track_power_is_off();
}

void LIUSB::follow_power(bool on) {
  power_heard_ = on;
  if (on != track_power()) on ? track_power_is_on() : track_power_is_off();
}

std::optional<StopOrder> LIUSB::stop_order() const {
  const int line = active() && hold_ ? hold_.port()->descriptor() : -1;
  if (line < 0) return std::nullopt;
  const auto order = liusb::frame(liusb::power_off);
  const auto& confirmation = liusb::power_is_off;
  return StopOrder{.line = line,
                   .bytes = {order.begin(), order.end()},
                   .confirmation = {confirmation.begin(), confirmation.end()}};
}

bool LIUSB::has_address_for(const DrivenDecoder& decoder) const {
  return liusb::can_drive(decoder.get_address());
}

bool LIUSB::can_address(const DrivenDecoder& decoder) {
  if (has_address_for(decoder)) return true;
  const auto address = decoder.get_address();
  const auto message = Glib::ustring::compose(
      _("%1 cannot drive a locomotive with the %2 address %3: it has short addresses from 1 to 99 "
        "and long ones from 100 to 9999. Give the decoder another address or another device."),
      get_name(), address.is_long() ? _("long") : _("short"), address.get_addr());
  if (get_status().raw() != message.raw()) set_status(message);
  return false;
}

// Reads values and address only now, after waiting for the device, to send the newest values.
DecoderUpdate LIUSB::deliver(DrivenDecoder& decoder, std::uint32_t item) {
  // The address may have changed meanwhile.
  if (!can_address(decoder)) throw DeviceInactiveException();
  const bool moves = item == DecoderUpdate::speed_bit || item == DecoderUpdate::direction_bit;
  return moves ? drive(decoder) : set_functions(decoder, DecoderUpdate::function_of(item));
}

DecoderUpdate LIUSB::drive(const DrivenDecoder& decoder) {
  auto sent = decoder.state();
  sent.mask = DecoderUpdate::speed_bit | DecoderUpdate::direction_bit;
  exchange(liusb::drive(decoder.get_address(), decoder.get_type(), sent.speed, sent.direction));
  return sent;
}

// A frame has a whole group of functions. Several decoders, for example accessory outputs, may
// share the address, so functions that are not out of date in this decoder are sent as last sent to
// the address.
DecoderUpdate LIUSB::set_functions(const DrivenDecoder& decoder, unsigned fn) {
  const auto& group = liusb::group_of(fn);
  const auto address = decoder.get_address();
  auto sent = decoder.state();
  const auto own = (sent.mask | DecoderUpdate::function_bit(fn)) >> 2;
  sent.functions = functions_[address].merge(sent.functions, own);
  sent.mask = group.mask();
  // Recorded even without an answer, because the request may have been carried out and must not be
  // undone by the next one.
  functions_[address].record(sent.functions, sent.mask >> 2);
  exchange(liusb::set_functions(address, group, sent.functions));
  return sent;
}

void LIUSB::set_point(unsigned address, unsigned output, bool on) {
  if (!liusb::can_switch(address) || output < 1 || output > 4) {
    return set_status(Glib::ustring::compose(
        _("%1 cannot switch output %2 of the accessory decoder %3: it has decoders from 1 to 256 "
          "with four outputs each."),
        get_name(), output, address));
  }
  converse([&] {
    switch_coil(liusb::energise(address, output, on));
    switch_coil(liusb::release(address, output, on));
  });
}

void LIUSB::switch_coil(const liusb::Bytes& message) {
  if (liusb::is_done(exchange(message))) return;
  set_status(Glib::ustring::compose(
      _("%1: the station did not switch accessory decoder %2. Is the track power on?"), get_name(),
      message[1] + 1));
  throw std::runtime_error("LIUSB::set_point failed");
}

}  // namespace zemblar

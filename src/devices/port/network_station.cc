#include "devices/port/network_station.h"

#include <giomm/networkaddress.h>
#include <yaml-cpp/yaml.h>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds attempt_interval(1000);
constexpr std::chrono::milliseconds at_once(1);
/// A host that is switched off neither accepts nor refuses. The system asks at once, after 1 s,
/// then after 2 s more (tcp(7)). With a new attempt by then, the host is asked every second.
constexpr std::chrono::milliseconds attempt_limit(2000);

/// Asking a key that is not there for its type throws the library's error.
void require_keys(const YAML::Node& node) {
  for (const auto* key : {"name", "id", "host", "use-as-default"}) {
    static_cast<void>(node[key].Type());
  }
}

}  // namespace

NetworkStation::NetworkStation(const Glib::ustring& name_format, std::uint16_t default_port,
                               const Glib::RefPtr<Socket>& socket)
    : CommandStation(name_format, "use-as-default"), default_port_(default_port), socket_(socket) {
  register_property<Glib::ustring>(this, "host", &NetworkStation::get_host,
                                   &NetworkStation::set_host);
  set_link(LinkPhase::connecting);
}

void NetworkStation::load(const YAML::Node& node) {
  require_keys(node);
  load_identity(node);
  node["host"] >> host_;
  node["use-as-default"] >> use_as_default_;
}

void NetworkStation::save_keys(YAML::Emitter& out) const {
  save_identity(out);
  out << YAML::Key << "host" << YAML::Value << host_;
  out << YAML::Key << "use-as-default" << YAML::Value << use_as_default_;
}

void NetworkStation::restore(const EntryChange& change) {
  CommandStation::restore(change);
  change.read<Glib::ustring>("host", [this](const auto& host) { set_host(host); });
}

// The operations that fibers wait for end in a later turn of the main loop. The fibers hold the
// socket, and find `liveness` false.
void NetworkStation::on_deleting() {
  CommandStation::on_deleting();
  attempt_limit_.cancel();
  silence_.cancel();
  connect_cancel_->cancel();
  read_cancel_->cancel();
  write_cancel_->cancel();
  cut_exchange();
}

void NetworkStation::set_host(const Glib::ustring& host) {
  if (host.raw() == host_.raw()) return;
  before_change();
  connect_cancel_->cancel();
  host_ = host;
  const auto alive = liveness();
  notify_property(*this, "host");
  if (!*alive) return;
  next_attempt_ = {};
  if (activating()) return cut_start();
  if (!active()) {
    stop_order_.reset();
    set_link_down({});
  }
  if (*alive) start_connecting();
}

void NetworkStation::reconnect() {
  next_attempt_ = {};
  was_cut_ = exchange_ && link_state().phase == LinkPhase::waiting_for_answer;
  if (activating()) return cut_start();
  if (active()) {
    give_up(Glib::ustring::compose(_("%1 is connected anew."), get_name()));
  } else {
    start_connecting();
  }
}

// The fiber of `start` sees the end and closes the connection.
void NetworkStation::cut_start() {
  begins_anew_ = true;
  std::exchange(write_cancel_, Gio::Cancellable::create())->cancel();
  cut_exchange();
}

// --- Connecting ---

bool NetworkStation::may_connect() const {
  const auto* layout = this->layout();
  return !is_deleting() && !(layout && layout->is_emptying());
}

void NetworkStation::start_connecting() {
  connect_cancel_->cancel();
  attempt_limit_.cancel();
  if (!may_connect()) return;
  connect_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = connect_cancel_] { keep_connecting(cancel); });
}

void NetworkStation::keep_connecting(const Cancel& cancel) {
  const auto alive = liveness();
  const auto address = parse_host();
  if (!address) return;
  while (wait_for_attempt(cancel)) {
    // A new host is for the next connection: the present one stays, and its end calls
    // `start_connecting`.
    if (active()) return;
    limit_attempt();
    const bool connected = try_connect(address, cancel);
    if (!*alive || cancel->is_cancelled()) return;
    attempt_limit_.cancel();
    next_attempt_ = Clock::now() + attempt_interval;
    if (connected) return set_active(true);
    tell_unreachable();
  }
}

void NetworkStation::limit_attempt() {
  attempt_limit_ = Timeout::once(attempt_limit, [this] {
    tell_unreachable();
    next_attempt_ = {};
    start_connecting();
  });
}

bool NetworkStation::wait_for_attempt(const Cancel& cancel) {
  const auto alive = liveness();
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next_attempt_ - Clock::now());
  if (left.count() > 0) sleep_for(left, cancel);
  return *alive && !cancel->is_cancelled();
}

bool NetworkStation::try_connect(const Glib::RefPtr<Gio::SocketConnectable>& address,
                                 const Cancel& cancel) {
  const auto socket = socket_;
  try {
    return socket->connect(address, cancel);
  } catch (...) {
    // Not there, not found, or already connected: the attempt has failed.
    return false;
  }
}

Glib::RefPtr<Gio::SocketConnectable> NetworkStation::parse_host() {
  if (host_.empty()) {
    set_link(LinkPhase::not_set_up,
             Glib::ustring::compose(_("%1 has no address yet: set it in its panel."), get_name()));
    return {};
  }
  try {
    return Gio::NetworkAddress::parse(host_.raw(), default_port_);
  } catch (const Glib::Error&) {
    set_link(LinkPhase::not_set_up,
             Glib::ustring::compose(_("%1 cannot connect: “%2” is no network address. Enter the "
                                      "station’s name or address."),
                                    get_name(), host_));
    return {};
  }
}

void NetworkStation::tell_unreachable() {
  set_link_down(Glib::ustring::compose(
      _("%1: no station answers at “%2”. It is tried again every second."), get_name(), host_));
}

void NetworkStation::close_socket() {
  const auto socket = socket_;
  try {
    socket->close();
  } catch (...) {
    // A connection that stays would be in the way of the next one.
    socket->drop();
  }
}

// --- In and out of service ---

bool NetworkStation::start() {
  const auto alive = liveness();
  begins_anew_ = false;
  failure_.clear();
  try {
    open();
    return true;
  } catch (const CmdFailed&) {
    if (*alive) failure_ = unusable_words();
  } catch (...) {
    // Whatever it was: the next attempt starts from the beginning.
  }
  if (!*alive) return false;
  connect_cancel_->cancel();
  read_cancel_->cancel();
  cut_exchange();
  close_socket();
  if (!*alive) return false;
  end_failed_start();
  return false;
}

void NetworkStation::end_failed_start() {
  const auto alive = liveness();
  // Not before `start` has returned, in any case.
  next_attempt_ = Clock::now() + (begins_anew_ ? at_once : attempt_interval);
  if (begins_anew_) {
    failure_.clear();
  } else if (failure_.empty()) {
    failure_ = Glib::ustring::compose(
        _("%1: the station at “%2” ended the connection before it could be used."), get_name(),
        host_);
  }
  set_link_down(failure_);
  if (*alive) start_connecting();
}

Glib::ustring NetworkStation::unusable_words() const {
  return Glib::ustring::compose(
      _("%1: the station at “%2” cannot be used, it answers %3. It is tried again every second."),
      get_name(), host_, refusal_words());
}

void NetworkStation::open() {
  const auto alive = liveness();
  const auto address = parse_host();
  if (!address) throw DeviceInactiveException();
  connect_cancel_->cancel();
  attempt_limit_.cancel();
  read_cancel_->cancel();
  if (!socket_->is_connected()) {
    const auto socket = socket_;
    socket->connect(address, write_cancel_);
    if (!*alive) throw DeviceInactiveException();
  }
  if (known_host_.raw() != host_.raw()) forget_station();
  known_host_ = host_;
  read_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = read_cancel_] { keep_reading(cancel); });
  log_on();
  note_stop_order();
  join_default();
}

void NetworkStation::note_stop_order() {
  stop_order_.reset();
  const auto peer = socket_->peer();
  if (!peer) return;
  stop_order_ = make_stop_order();
  stop_order_->host = peer->host;
  stop_order_->port = peer->port;
}

void NetworkStation::stop() {
  const auto alive = liveness();
  leave_default();
  connect_cancel_->cancel();
  read_cancel_->cancel();
  cut_exchange();
  close_socket();
  if (*alive) start_connecting();
}

// Out of service after a failure. While `start` runs, it falls out of that instead.
void NetworkStation::give_up(const Glib::ustring& why) {
  const auto alive = liveness();
  if (activating()) {
    failure_ = why;
  } else if (active()) {
    set_link_down(why);
  }
  if (!*alive) return;
  go_out_of_service();
  if (*alive) cut_exchange();
}

}  // namespace zemblar

#include "devices/ecos/device_ecos.h"

#include <giomm/networkaddress.h>
#include <yaml-cpp/yaml.h>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "devices/ecos/ecos_commands.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(private_class<ECoS>("!device/ESU/ECoS",
                                                                   Section::devices));

constexpr std::chrono::milliseconds attempt_interval(1000);
constexpr std::chrono::milliseconds at_once(1);
/// A host that is switched off answers neither yes nor no. The system asks it at once, after 1 s,
/// then after 2 s more (tcp(7)): beginning anew by then, it is asked every second.
constexpr std::chrono::milliseconds attempt_limit(2000);

/// Asking a key that is not there for its type throws the library's error.
void require_keys(const YAML::Node& node) {
  for (const auto* key : {"name", "id", "host", "use-as-default"}) {
    static_cast<void>(node[key].Type());
  }
}

}  // namespace

ECoS::ECoS(const Glib::RefPtr<Socket>& socket)
    : Glib::ObjectBase("DeviceECoS"),
      CommandStation(_("ESU ECoS %1"), "use-as-default"),
      socket_(socket) {
  register_properties();
  set_link(LinkPhase::connecting);
  start_connecting();
}

ECoS::ECoS(const YAML::Node& node, const Glib::RefPtr<Socket>& socket)
    : Glib::ObjectBase("DeviceECoS"),
      CommandStation(_("ESU ECoS %1"), "use-as-default"),
      socket_(socket) {
  register_properties();
  require_keys(node);
  load_identity(node);
  node["host"] >> host_;
  node["use-as-default"] >> use_as_default_;
  set_link(LinkPhase::connecting);
  start_connecting();
}

ECoS::~ECoS() {
  ECoS::on_deleting();
}

void ECoS::register_properties() {
  register_property<Glib::ustring>(this, "host", &ECoS::get_host, &ECoS::set_host);
}

void ECoS::save(YAML::Emitter& out) const {
  out << unwritable_tag("device/ESU/ECoS") << YAML::BeginMap;
  save_identity(out);
  out << YAML::Key << "host" << YAML::Value << host_;
  out << YAML::Key << "use-as-default" << YAML::Value << use_as_default_;
  out << YAML::EndMap;
}

void ECoS::restore(const EntryChange& change) {
  CommandStation::restore(change);
  change.read<Glib::ustring>("host", [this](const auto& host) { set_host(host); });
}

// What the fibers still wait for completes in a later turn of the main loop and finds the socket,
// which they hold, and the mark of a device that is gone.
void ECoS::on_deleting() {
  CommandStation::on_deleting();
  attempt_limit_.cancel();
  silence_.cancel();
  connect_cancel_->cancel();
  read_cancel_->cancel();
  write_cancel_->cancel();
  cut_exchange();
}

void ECoS::set_host(const Glib::ustring& host) {
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

void ECoS::reconnect() {
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
void ECoS::cut_start() {
  begins_anew_ = true;
  std::exchange(write_cancel_, Gio::Cancellable::create())->cancel();
  cut_exchange();
}

// --- Connecting ---

bool ECoS::may_connect() const {
  const auto* layout = this->layout();
  return !is_deleting() && !(layout && layout->is_emptying());
}

void ECoS::start_connecting() {
  connect_cancel_->cancel();
  attempt_limit_.cancel();
  if (!may_connect()) return;
  connect_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = connect_cancel_] { keep_connecting(cancel); });
}

void ECoS::keep_connecting(const Cancel& cancel) {
  const auto alive = liveness();
  const auto address = parse_host();
  if (!address) return;
  while (wait_for_attempt(cancel)) {
    // A new host is for the next connection: the present one stays, and its end starts over here.
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

void ECoS::limit_attempt() {
  attempt_limit_ = Timeout::once(attempt_limit, [this] {
    tell_unreachable();
    next_attempt_ = {};
    start_connecting();
  });
}

bool ECoS::wait_for_attempt(const Cancel& cancel) {
  const auto alive = liveness();
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next_attempt_ - Clock::now());
  if (left.count() > 0) sleep_for(left, cancel);
  return *alive && !cancel->is_cancelled();
}

bool ECoS::try_connect(const Glib::RefPtr<Gio::SocketConnectable>& address, const Cancel& cancel) {
  const auto socket = socket_;
  try {
    return socket->connect(address, cancel);
  } catch (...) {
    // Not there, not found, or already connected: all the same a try that failed.
    return false;
  }
}

Glib::RefPtr<Gio::SocketConnectable> ECoS::parse_host() {
  if (host_.empty()) {
    set_link(LinkPhase::not_set_up,
             Glib::ustring::compose(_("%1 has no address yet: set it in its panel."), get_name()));
    return {};
  }
  try {
    return Gio::NetworkAddress::parse(host_.raw(), default_port);
  } catch (const Glib::Error&) {
    set_link(LinkPhase::not_set_up,
             Glib::ustring::compose(_("%1 cannot connect: “%2” is no network address. Enter the "
                                      "station’s name or address."),
                                    get_name(), host_));
    return {};
  }
}

void ECoS::tell_unreachable() {
  set_link_down(Glib::ustring::compose(
      _("%1: no station answers at “%2”. It is tried again every second."), get_name(), host_));
}

void ECoS::close_socket() {
  const auto socket = socket_;
  try {
    socket->close();
  } catch (...) {
    // A connection that stays would be in the way of the next one.
    socket->drop();
  }
}

// --- In and out of service ---

bool ECoS::start() {
  const auto alive = liveness();
  begins_anew_ = false;
  failure_.clear();
  try {
    subscribe();
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

void ECoS::end_failed_start() {
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

Glib::ustring ECoS::unusable_words() const {
  return Glib::ustring::compose(
      _("%1: the station at “%2” cannot be used, it answers %3. It is tried again every second."),
      get_name(), host_, refusal_words());
}

void ECoS::subscribe() {
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
  if (objects_host_.raw() != host_.raw()) objects_.clear();
  objects_host_ = host_;
  read_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = read_cancel_] { keep_reading(cancel); });
  expect_success(ecos::request_view(ecos::station));
  expect_success(ecos::request_view(ecos::locomotive_manager));
  follow_power(expect_success(ecos::get_status()).get_object(ecos::station));
  note_stop_order();
  join_default();
}

void ECoS::note_stop_order() {
  stop_order_.reset();
  const auto peer = socket_->peer();
  if (!peer) return;
  stop_order_ = StopOrder{.host = peer->host,
                          .port = peer->port,
                          .bytes = ecos::stop() + '\n',
                          .confirmation = "<END 0"};
}

void ECoS::stop() {
  const auto alive = liveness();
  leave_default();
  connect_cancel_->cancel();
  read_cancel_->cancel();
  cut_exchange();
  close_socket();
  if (*alive) start_connecting();
}

// Out of service after a failure. While `start` runs, it falls out of that instead.
void ECoS::give_up(const Glib::ustring& why) {
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

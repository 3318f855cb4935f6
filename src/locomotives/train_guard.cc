#include "locomotives/train_guard.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "devices/device.h"
#include "locomotives/moving_trains.h"

namespace zemblar {
namespace {

/// Interval of the heartbeat. It is short, because the program may hang just after a train has
/// started.
constexpr std::chrono::milliseconds beat_interval(250);
/// A guard that ends sooner than this has failed to start.
constexpr std::chrono::seconds shortest_life(2);
constexpr std::chrono::seconds pause_between_starts(10);
/// In characters; limits the length of a message to the guard.
constexpr std::size_t longest_name = 100;

std::string key_of(const Device* device) {
  return std::to_string(reinterpret_cast<std::uintptr_t>(device));
}

bool is_same(const guard::Station& one, const guard::Station& other) {
  return one.name == other.name && one.order == other.order;
}

}  // namespace

TrainGuard::TrainGuard(std::string program) : program_(std::move(program)) {
  Device::signal_in_service().connect(sigc::mem_fun(*this, &TrainGuard::watch));
}

void TrainGuard::take_leave() {
  heartbeat_.cancel();
  has_ended_ = true;  // nothing is sent any more until the program ends
  if (process_) process_->take_leave();
  process_.reset();
}

// Reports also at once when a station goes out of service: while the guard keeps a serial line
// open, the system does not give its name to the hardware when it is plugged in again.
void TrainGuard::watch(Device& device) {
  watched_[&device] =
      device.property_active().signal_changed().connect(sigc::mem_fun(*this, &TrainGuard::follow));
  follow();
}

TrainGuard::Stations TrainGuard::find_stations() {
  Stations stations;
  if (!Layout::exists()) return stations;
  for (auto* object : Layout::get().get_devices()) {
    const auto* device = dynamic_cast<const Device*>(object);
    if (!device || device->is_deleting()) continue;
    if (const auto order = device->stop_order()) {
      stations[device] = {.key = key_of(device),
                          .name = device->get_name().substr(0, longest_name).raw(),
                          .order = *order};
    }
  }
  return stations;
}

void TrainGuard::follow() {
  if (has_ended_) return;
  const auto stations = find_stations();
  if (stations.empty() && !process_) return;
  if (!heartbeat_.armed()) start_heartbeat();
  if (process_ || start()) update(stations);
}

void TrainGuard::update(const Stations& stations) {
  const auto former = std::exchange(sent_, stations);
  for (const auto& [device, station] : former) {
    if (!stations.contains(device)) send(guard::Gone{station.key});
  }
  for (const auto& [device, station] : stations) {
    const auto known = former.find(device);
    if (known == former.end() || !is_same(known->second, station)) send(station);
  }
  send(guard::Alive{any_train_may_move()});
}

// Kills a guard that does not receive, so that it cannot wake up later and take the program for
// dead.
void TrainGuard::send(const guard::Message& message) {
  if (has_ended_ || process_->send(message)) return;
  process_->kill();
  has_ended_ = true;
}

void TrainGuard::on_ended(int status) {
  has_ended_ = true;
  ended_ = Clock::now();
  if (status == GuardProcess::has_stopped) {
    stopped_.show(Glib::ustring::compose(
        dngettext(
            GETTEXT_PACKAGE,
            "The guard has switched the track power off: Zemblar had done nothing for %1 second.",
            "The guard has switched the track power off: Zemblar had done nothing for %1 seconds.",
            static_cast<unsigned long>(guard::longest_silence.count())),
        guard::longest_silence.count()));
  } else if (ended_ - started_ < shortest_life) {
    report_missing(_("it ends at once"));
  }
}

void TrainGuard::report_missing(const Glib::ustring& why) {
  missing_.show(Glib::ustring::compose(
      _("There is no guard: trains drive on if Zemblar ends by itself. %1 cannot be started: %2"),
      readable(program_), why));
}

// Waits, because the station reports the end of its track power some time after the guard has
// ended.
void TrainGuard::follow_power() {
  if (process_ && Clock::now() - started_ > shortest_life) missing_.clear();
  if (!stopped_.is_active() || Clock::now() - ended_ < shortest_life) return;
  const auto is_on = [](const auto& one) { return one.first->track_power(); };
  if (std::ranges::any_of(sent_, is_on)) stopped_.clear();
}

void TrainGuard::end_process() {
  process_.reset();
  sent_.clear();
  has_ended_ = false;
}

void TrainGuard::start_heartbeat() {
  heartbeat_ = Timeout::every(beat_interval, [this] {
    if (has_ended_) end_process();
    follow();
    follow_power();
    return true;
  });
}

bool TrainGuard::start() try {
  if (missing_.is_active() && Clock::now() - started_ < pause_between_starts) return false;
  started_ = Clock::now();
  process_ = std::make_unique<GuardProcess>(program_);
  process_->signal_ended().connect(sigc::mem_fun(*this, &TrainGuard::on_ended));
  return true;
} catch (const Glib::Error& error) {
  report_missing(error.what());
  return false;
} catch (const std::system_error& error) {
  report_missing(readable(error.code().message()));
  return false;
}

}  // namespace zemblar

#include "guard/station_guard.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <thread>
#include <utility>

#include "guard/station_stopper.h"

namespace zemblar::guard {

StationGuard::~StationGuard() {
  while (!stations_.empty()) forget(stations_.begin()->first);
}

// Suspending the machine does not count as silence: neither the monotonic clock nor poll() counts
// that time.
bool StationGuard::hears_in_time() const {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + longest_silence;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
    const auto rest = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    pollfd watched{channel_.descriptor(), POLLIN, 0};
    const auto ready = ::poll(&watched, 1, driving_ ? rest : -1);
    if (ready > 0) return true;
    if (ready == 0) return false;
    if (errno != EINTR) return true;  // `receive` reports the error
  }
}

End StationGuard::watch() {
  while (hears_in_time()) {
    const auto datagram = channel_.receive();
    if (!datagram) return left_ ? End::leave : End::lost;
    handle(*datagram);
  }
  return End::silent;
}

void StationGuard::handle(const GuardChannel::Datagram& datagram) {
  const auto message = decode(datagram.bytes);
  if (!message) {
    if (datagram.descriptor >= 0) ::close(datagram.descriptor);
    return;
  }
  if (const auto* station = std::get_if<Station>(&*message)) add(*station, datagram.descriptor);
  if (const auto* gone = std::get_if<Gone>(&*message)) forget(gone->key);
  if (const auto* alive = std::get_if<Alive>(&*message)) driving_ = alive->driving;
  if (std::get_if<Leave>(&*message)) left_ = true;
}

void StationGuard::add(Station station, int line) {
  forget(station.key);
  station.order.line = line;
  const auto key = station.key;
  stations_[key] = std::move(station);
}

void StationGuard::forget(const std::string& key) {
  const auto found = stations_.find(key);
  if (found == stations_.end()) return;
  if (found->second.order.line >= 0) ::close(found->second.order.line);
  stations_.erase(found);
}

std::vector<Station> StationGuard::stations() const {
  std::vector<Station> all;
  for (const auto& [key, station] : stations_) all.push_back(station);
  return all;
}

std::vector<Outcome> stop_all(const std::vector<Station>& stations) {
  std::vector<Outcome> outcomes;
  for (const auto& station : stations) outcomes.push_back({.name = station.name});
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < stations.size(); ++i) {
    threads.emplace_back([&, i] { outcomes[i].stopped = stop_station(stations[i].order); });
  }
  for (auto& thread : threads) thread.join();
  return outcomes;
}

}  // namespace zemblar::guard

#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/stations/ecos_faults.h"
#include "simulator/stations/ecos_log.h"
#include "simulator/stations/ecos_model.h"
#include "simulator/stations/station_hub.h"

namespace zemblar::simulator {

/// The station without a network: clients, their command lines, its answers and its misbehaviour.
///
/// Time is a function given at construction, so that delays can run on the main
/// loop or on a clock of a test. One thread.
class EcosHub : public StationHub {
 public:
  using Milliseconds = std::chrono::milliseconds;
  /// Calls the function once after the time; calls due at the same time in the order of requests.
  using After = std::function<void(Milliseconds, std::function<void()>)>;

  explicit EcosHub(After after) : after_(std::move(after)) {}

  EcosClient join(ClientLink& link) override;
  void receive(EcosClient client, std::string_view bytes) override;
  void leave(EcosClient client) override;
  void drop_all() override;

  /// Called with each command line after the hub has handled it, and with the status of the reply;
  /// no value for a command that gets no reply and has no effect.
  using Observer =
      std::function<void(EcosClient, const std::string& line, std::optional<unsigned> status)>;
  void on_command(Observer observer) { observer_ = std::move(observer); }

  /// The keys on the station's front: track power, and the emergency that also sets all speeds
  /// to 0.
  void press_go() { post(model_.press_go()); }
  void press_stop() { post(model_.press_stop()); }
  void press_emergency() { post(model_.press_emergency()); }

  /// Adds a locomotive at the station's own panel, and returns its object id. Several locomotives
  /// may have the same address; 0 stands for no address.
  unsigned add_locomotive(unsigned address, std::string name);
  /// The first locomotive of that address; null for none.
  [[nodiscard]] const EcosLocomotive* locomotive(unsigned address) const {
    return model_.locomotive(address);
  }

  [[nodiscard]] std::size_t client_count() const { return clients_.size(); }
  [[nodiscard]] EcosModel& model() { return model_; }
  [[nodiscard]] const EcosModel& model() const { return model_; }
  [[nodiscard]] EcosFaults& faults() { return faults_; }
  [[nodiscard]] EcosLog& log() { return log_; }
  [[nodiscard]] const EcosLog& log() const { return log_; }

 private:
  struct Client;

  void post(const std::vector<EcosMessage>& messages);
  void execute(EcosClient client, const std::string& line);
  std::optional<unsigned> react(EcosClient client, const std::string& line);
  void send(EcosClient client, const std::string& message);
  void pump(const std::shared_ptr<Client>& client);
  void drop(EcosClient client, std::string_view reason);

  After after_;
  EcosModel model_;
  EcosFaults faults_;
  EcosLog log_;
  Observer observer_;
  EcosClient last_client_ = 0;
  std::map<EcosClient, std::shared_ptr<Client>> clients_;
};

}  // namespace zemblar::simulator

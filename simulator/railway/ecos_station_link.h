#pragma once

#include "devices/ecos/device_ecos.h"
#include "simulator/railway/memory_station.h"
#include "simulator/railway/station_link.h"

namespace zemblar::simulator {

/// An ECoS in memory. It knows the locomotives with the addresses from 1 to `locomotives`.
class EcosStationLink : public StationLink {
 public:
  explicit EcosStationLink(unsigned locomotives);

  /// A socket that leads to the station, for another device of the program.
  [[nodiscard]] Glib::RefPtr<Socket> socket() { return station_.socket(); }
  /// Clears the station's log.
  void clear_log() { station_.hub.log().clear(); }

  [[nodiscard]] const char* name() const override { return "ECoS"; }
  [[nodiscard]] ECoS& device() override { return *device_; }
  [[nodiscard]] std::chrono::milliseconds allowed() const override;
  [[nodiscard]] std::optional<DecoderUpdate> locomotive(unsigned address) const override;
  [[nodiscard]] bool power() const override { return station_.hub.model().track_power(); }
  [[nodiscard]] bool tells_refusals() const override { return true; }

 protected:
  void apply(LinkFault fault, unsigned victim, Chance& chance) override;
  void lift(LinkFault fault, bool by_hand) override;

 private:
  /// A command that the station has not answered.
  struct Unanswered {
    EcosClient client;
    std::string line;
  };

  void note(EcosClient client, const std::string& line, std::optional<unsigned> status);
  void report_locomotive(unsigned address, const EcosOption& option);
  void vanish();
  void flood(Chance& chance);

  MemoryStation station_;
  ECoS* device_;
  std::optional<Unanswered> unanswered_;
  std::chrono::milliseconds exchange_;    // the time of a command and its answer
  std::optional<Clock::time_point> cut_;  // when the station vanished during a connection
  Timeout flood_;
};

}  // namespace zemblar::simulator

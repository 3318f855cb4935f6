#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "core/address.h"
#include "devices/device.h"
#include "devices/railcom/railcom_decoder.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "simulator/trains/track_detector.h"

namespace zemblar::simulator {

/// One input of a reader in memory: a detector that is told what the rails would tell it.
///
/// It is occupied while current flows and for a quarter of a second after that, which covers dirty
/// rails, and while it sees a locomotive. A locomotive is seen from its first RailCom answer until
/// a second after its last; whose it is, the layout's default device knows by the address. Sends
/// `signal_changed` before `signal_arrived`, and `signal_left` before `signal_changed`, as readers
/// do. Not in a layout file.
class TrackInput : public Device, public TrackDetector {
 public:
  TrackInput();
  void save(YAML::Emitter& out) const override;

  void set_current(bool on, unsigned side = 0) override;
  void receive(std::string_view dcc, std::string_view bytes) override;
  [[nodiscard]] bool current() const override { return current_; }
  [[nodiscard]] unsigned side() const override { return orientation_; }

  [[nodiscard]] int supports(std::string_view feature) const override;
  [[nodiscard]] bool occupied() const override;
  [[nodiscard]] unsigned orientation() const override { return orientation_; }
  /// In the order of their addresses.
  [[nodiscard]] std::vector<Lok*> detected() const override;

  /// Stays occupied for this long after the current.
  static constexpr std::chrono::milliseconds hold{251};
  /// Sees a locomotive for this long after its answer.
  static constexpr std::chrono::milliseconds memory{1001};

 protected:
  void on_deleting() override;

 private:
  struct Detection {
    Lok* lok;
    Clock::time_point seen;
    ScopedConnection deleted;
  };

  void on_seen(const Address& address);
  void drop(Address address);
  void forget_old();

  bool current_ = false;
  unsigned orientation_ = 0;
  std::map<Address, Detection> detections_;
  RailComDecoder decoder_;
  Timeout holding_;  // armed while occupied without current
  Timeout ageing_;   // armed while there are detections
};

/// A reader in memory; its inputs are its children. Not in a layout file.
class TrackReader : public Device {
 public:
  TrackReader();
  void save(YAML::Emitter& out) const override;

  TrackInput* add_input();

  [[nodiscard]] int supports(std::string_view feature) const override;
};

}  // namespace zemblar::simulator

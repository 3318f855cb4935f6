#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "core/address.h"
#include "devices/device.h"
#include "devices/railcom/railcom_decoder.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// A device that tells blocks their occupancy and their locomotives.
class Detector : public Device {
 public:
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  explicit Detector(const Glib::ustring& name_format) : Device(name_format) {}

  /// Emits a copy of the signal: a signal that ends inside its own emission would leak its slots.
  template <typename Signal, typename... Values>
  static void tell(const Signal signal, Values... values) {
    signal.emit(values...);
  }
};

/// A detector of current and of RailCom answers. A driver adds the source of both.
///
/// The detector is occupied while current flows, for a quarter of a second after that, and while a
/// locomotive is detected. The quarter of a second covers the gaps at rail joints and dirty wheels.
/// A locomotive is detected from its first RailCom answer until a second after its last. The
/// command station knows which locomotive owns an address; an address without an owner is ignored.
///
/// `signal_changed` comes before `signal_arrived`, and after `signal_left`. A handler of any of
/// them may end this detector, its reader and the locomotive.
class RailComDetector : public Detector {
 public:
  /// The detector stays occupied for this long after the current.
  static constexpr std::chrono::milliseconds hold{251};
  /// A locomotive stays detected for this long after its answer.
  static constexpr std::chrono::milliseconds memory{1001};

  [[nodiscard]] bool occupied() const override;
  [[nodiscard]] unsigned orientation() const override { return state_ > 1 ? state_ - 1 : 0; }
  /// In the order of their addresses.
  [[nodiscard]] std::vector<Lok*> detected() const override;

 protected:
  /// Time since a moment that the driver chooses.
  using Time = Clock::duration;

  explicit RailComDetector(const Glib::ustring& name_format);
  void on_deleting() override;

  /// The time that `hold` and `memory` are measured in.
  [[nodiscard]] virtual Time now() const = 0;
  /// The command station that knows the owners of addresses; null stands for the layout's default
  /// device.
  [[nodiscard]] virtual const Device* dcc_device() const { return nullptr; }

  [[nodiscard]] unsigned state() const { return state_; }
  /// Below 4 (asserted as "state_ < 4"): 0 without current, 1 with current, 2 and 3 with current
  /// and RailCom from one side or the other.
  void set_state(unsigned state);
  /// Takes the RailCom answer to a DCC packet; no bytes stand for no answer. Both must stay as they
  /// are until the call returns, whatever handlers do.
  void hear(std::string_view dcc, std::string_view bytes);
  /// Ends the occupancy and the detections whose time is over.
  void forget_overdue();
  /// When `forget_overdue` has something to do next; none while no time runs.
  [[nodiscard]] std::optional<Time> next_due() const;

 private:
  struct Detection {
    Time seen;  // of the last answer
    Lok* lok;
    ScopedConnection lok_deleted;
  };

  [[nodiscard]] Lok* find_lok_of(Address address) const;
  void on_seen(const Address& address);
  void detect(Address address, Lok* lok);
  void drop(Address address);
  void drop_silent();

  std::map<Address, Detection> detections_;
  RailComDecoder decoder_;
  std::optional<Time> free_since_;  // set while the detector is held occupied without current
  unsigned state_ = 0;
};

}  // namespace zemblar

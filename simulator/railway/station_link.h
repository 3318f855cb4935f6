#pragma once

#include <functional>
#include <optional>

#include "devices/command_station.h"
#include "devices/decoder_update.h"
#include "runtime/timer.h"
#include "simulator/stations/link_fault.h"

namespace zemblar::simulator {

class Chance;

/// A command that a simulated station has carried out.
struct Executed {
  enum class Kind { item, power, point };

  Kind kind;
  unsigned address = 0;     ///< of the locomotive, or of the accessory decoder
  std::uint32_t item = 0;   ///< a bit of DecoderUpdate
  std::uint32_t value = 0;  ///< as DecoderUpdate::value_of has it; 1 for power on
};

/// A simulated command station, the wire to it, and the program's own driver of it in the current
/// layout, in virtual time. One fault at a time.
class StationLink {
 public:
  StationLink() = default;
  virtual ~StationLink() = default;
  StationLink(const StationLink&) = delete;
  StationLink& operator=(const StationLink&) = delete;

  [[nodiscard]] virtual const char* name() const = 0;
  [[nodiscard]] virtual CommandStation& device() = 0;
  void on_executed(std::function<void(const Executed&)> listener) {
    listener_ = std::move(listener);
  }

  /// `victim` is the address of the locomotive that the fault affects, for a fault that affects
  /// one.
  void begin(LinkFault fault, unsigned victim, Chance& chance);
  /// `by_hand`: the user does what the driver cannot do by itself, such as "Reconnect".
  void end(bool by_hand);

  /// The time until a command arrived, from the wish, or from the moment at which the link could
  /// carry the command if that is later. The link cannot carry commands while the latest fault is
  ///  - dropped: until the far end takes a connection again, or is plugged in;
  ///  - half-open: until the far end answers again; an ECoS connection that stood is of no use
  ///    until the system gives it up after 14 s or a person presses "Reconnect";
  ///  - no answer, an ECoS alone: from the command that is not answered until the answer comes or a
  ///    person presses "Reconnect", since an answer is waited for without a limit.
  /// All other faults leave the link usable.
  [[nodiscard]] Clock::duration delay(Clock::time_point wished, Clock::time_point arrived) const;

  /// The time since which the link can carry commands, if the latest fault has ended.
  [[nodiscard]] Clock::time_point able_since() const { return blocked_until_; }
  /// The longest time that a stop may take over a usable link: one second, and a time-out or the
  /// exchanges of a start.
  [[nodiscard]] virtual std::chrono::milliseconds allowed() const = 0;

  /// The values that the station has of a locomotive, without a mask; no value for an unknown one.
  [[nodiscard]] virtual std::optional<DecoderUpdate> locomotive(unsigned address) const = 0;
  [[nodiscard]] virtual bool power() const = 0;
  /// True if the driver learns that a command was refused, so that it had no effect.
  [[nodiscard]] virtual bool tells_refusals() const = 0;

 protected:
  void report(const Executed& executed) const {
    if (listener_) listener_(executed);
  }
  virtual void apply(LinkFault fault, unsigned victim, Chance& chance) = 0;
  virtual void lift(LinkFault fault, bool by_hand) = 0;
  void block_from_now();
  void block_until(Clock::time_point time) { blocked_until_ = time; }

 private:
  std::function<void(const Executed&)> listener_;
  std::optional<LinkFault> fault_;
  Clock::time_point blocked_from_{};
  Clock::time_point blocked_until_{};
};

}  // namespace zemblar::simulator

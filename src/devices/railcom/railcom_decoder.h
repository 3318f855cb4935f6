#pragma once

#include <sigc++/signal.h>

#include <cstdint>
#include <memory>
#include <string_view>

#include "core/address.h"

namespace zemblar {

/// Determines which decoders have answered on the track, from a DCC packet and the RailCom bytes
/// received after it (RCN-217, NMRA S-9.3.2).
///
/// Use one per detector, because the two halves of an address arrive after different packets. The
/// bytes are read as one run of datagrams of two symbols, without distinguishing channels 1 and 2:
/// identifiers 1 and 2 name a locomotive after any packet, and all other datagrams after a packet
/// to a locomotive count as that locomotive's answer. Larger datagrams of the standard are also
/// read as pairs. A byte that is no symbol ends the run.
///
/// Handlers may destroy the decoder, which ends the emission of signals. No I/O, no clock.
class RailComDecoder {
 public:
  using Seen = sigc::signal<void, const Address&>;
  using Feedback = sigc::signal<void, const Address&, std::uint8_t>;

  RailComDecoder() = default;
  RailComDecoder(const RailComDecoder&) = delete;
  RailComDecoder& operator=(const RailComDecoder&) = delete;
  ~RailComDecoder() { state_->alive = false; }

  /// `dcc` is the packet from its address byte on, `packet` the bytes received in its cutout.
  /// Asserts that neither is empty. The bytes must stay unchanged as long as the decoder exists.
  void decode(std::string_view dcc, std::string_view packet);

  /// A decoder with this address has answered; emitted once per datagram. Not emitted for a number
  /// that is no locomotive address.
  Seen& signal_seen() { return state_->seen; }

  // The content of the answer, emitted after `signal_seen`. If the top bit selects between two
  // signals, it is removed. Identifier 8 is reported only if that bit is clear.
  Feedback& signal_id3_low() { return state_->id3_low; }
  Feedback& signal_id3_high() { return state_->id3_high; }
  Feedback& signal_id4() { return state_->id4; }
  Feedback& signal_id5() { return state_->id5; }
  Feedback& signal_id6() { return state_->id6; }
  Feedback& signal_id7_low() { return state_->id7_low; }
  Feedback& signal_id7_high() { return state_->id7_high; }
  Feedback& signal_id8() { return state_->id8; }

 private:
  struct Route;
  class Run;

  static constexpr std::uint16_t no_address_high = 65535;

  /// Exists until the emission has ended, even if a handler destroys the decoder.
  struct State {
    bool alive = true;
    std::uint16_t address_high =
        no_address_high;  // high part from the last datagram with identifier 1
    Seen seen{};
    Feedback id3_low{}, id3_high{};
    Feedback id4{}, id5{}, id6{};
    Feedback id7_low{}, id7_high{};
    Feedback id8{};
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace zemblar

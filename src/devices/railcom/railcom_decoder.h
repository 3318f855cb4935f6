#pragma once

#include <sigc++/signal.h>

#include <cstdint>
#include <memory>
#include <string_view>

#include "core/address.h"

namespace zemblar {

/// Says which decoders have answered on the track, from a DCC packet and the RailCom bytes that
/// were heard after it (RCN-217, NMRA S-9.3.2).
///
/// One for each detector, because the two halves of an address come one after the other, each after
/// a packet of its own. The bytes are read as one run of datagrams of two symbols, and channel 1 is
/// not told from channel 2: identifiers 1 and 2 name a locomotive after any packet, and whatever
/// else follows a packet to a locomotive counts as the answer of that one. The larger datagrams of
/// the standard are read as pairs all the same. What is no symbol ends the run.
///
/// Handlers may destroy the decoder; nothing more comes out of it then. No I/O, no clock.
class RailComDecoder {
 public:
  using Seen = sigc::signal<void, const Address&>;
  using Feedback = sigc::signal<void, const Address&, std::uint8_t>;

  RailComDecoder() = default;
  RailComDecoder(const RailComDecoder&) = delete;
  RailComDecoder& operator=(const RailComDecoder&) = delete;
  ~RailComDecoder() { state_->alive = false; }

  /// `dcc` is the packet from its address byte on, `packet` what was heard in its cutout. Asserts
  /// that neither is empty. The bytes must stay unchanged for as long as the decoder is there.
  void decode(std::string_view dcc, std::string_view packet);

  /// A decoder of that address answered: once for each datagram. A number that is no address of a
  /// locomotive is not told.
  Seen& signal_seen() { return state_->seen; }

  // What the answer was, after `signal_seen`. Where the top bit tells two signals apart it is
  // removed. Identifier 8 is told only when that bit is clear.
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

  /// Outlives a decoder that is destroyed in a handler until the emission has ended.
  struct State {
    bool alive = true;
    std::uint16_t address_high = no_address_high;  // what identifier 1 last brought
    Seen seen{};
    Feedback id3_low{}, id3_high{};
    Feedback id4{}, id5{}, id6{};
    Feedback id7_low{}, id7_high{};
    Feedback id8{};
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace zemblar

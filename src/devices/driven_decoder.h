#pragma once

#include <glibmm/object.h>

#include "core/address.h"
#include "devices/decoder_update.h"

namespace zemblar {

/// Speed-step format of a decoder.
enum class DecoderType : int { dcc14 = 0, dcc27 = 1, dcc28 = 2, dcc128 = 3 };

/// A decoder as a device sees it: its address, the values that it should receive, and a callback
/// for the answer.
///
/// Decoders are held by Glib::RefPtr: a fiber that uses a decoder keeps it alive even if its
/// locomotive has ended. Each request for an update gets exactly one call of `complete`.
class DrivenDecoder : public Glib::Object {
 public:
  /// The answer of a device: the delivered items; an empty mask if none were.
  virtual void complete(const DecoderUpdate& delivered) = 0;

  /// The decoder itself; for a proxy, the decoder that it represents.
  [[nodiscard]] virtual const DrivenDecoder& origin() const { return *this; }
  /// True if the locomotive has ended, so that nothing is to be sent any more.
  [[nodiscard]] virtual bool is_retired() const { return false; }

  [[nodiscard]] virtual DecoderType get_type() const { return type_; }
  [[nodiscard]] virtual Address get_address() const { return address_; }
  /// The wanted values; the mask has the items that are out of date.
  [[nodiscard]] virtual const DecoderUpdate& state() const { return state_; }
  /// 0 to 126, or DecoderUpdate::emergency_stop.
  [[nodiscard]] std::uint32_t get_speed() const { return state().speed; }
  [[nodiscard]] Direction get_direction() const { return state().direction; }
  /// Asserts "fn <= 28".
  [[nodiscard]] bool get_function(unsigned fn) const;

 protected:
  DrivenDecoder() = default;

  DecoderType type_ = DecoderType::dcc128;
  Address address_{3};
  DecoderUpdate state_;
};

}  // namespace zemblar

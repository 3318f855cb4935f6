#pragma once

#include <glibmm/object.h>

#include "core/address.h"
#include "devices/decoder_update.h"

namespace zemblar {

/// Speed-step format of a decoder.
enum class DecoderType : int { dcc14 = 0, dcc27 = 1, dcc28 = 2, dcc128 = 3 };

/// A decoder as a device sees it: where it is addressed, what it should receive, and whom to tell
/// what it has received.
///
/// Decoders are held by Glib::RefPtr: a fiber that talks to one keeps it alive, though its
/// locomotive may be gone. Whoever asks a device for an update gets exactly one `complete` for it.
class DrivenDecoder : public Glib::Object {
 public:
  /// What of the update was delivered; an empty mask when nothing was.
  virtual void complete(const DecoderUpdate& delivered) = 0;

  /// The decoder whose wish this is; another one where a proxy stands in for it.
  [[nodiscard]] virtual const DrivenDecoder& origin() const { return *this; }
  /// Its locomotive has gone, and nothing is wished any more.
  [[nodiscard]] virtual bool is_retired() const { return false; }

  [[nodiscard]] virtual DecoderType get_type() const { return type_; }
  [[nodiscard]] virtual Address get_address() const { return address_; }
  /// The wanted values, and in the mask what is out of date.
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

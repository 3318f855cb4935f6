#pragma once

#include "devices/driven_decoder.h"

namespace zemblar {

class fiber;

/// Represents a decoder while one command goes to several devices, and collects their answers.
///
/// Made inside a fiber and held by Glib::RefPtr. It has the decoder's values at the time of
/// construction. Its mask starts full and each answer clears bits, so after all answers it has the
/// items that every device has delivered with these values.
class DecoderProxy : public DrivenDecoder {
 public:
  static Glib::RefPtr<DecoderProxy> create(const DrivenDecoder* parent);

  /// Collects one answer. The last one resumes the waiting fiber, so the caller must not use
  /// anything of the fan-out afterwards.
  void complete(const DecoderUpdate& delivered) override;

  /// Suspends the running fiber until `count` answers have come, including earlier ones. Asserts
  /// "count >= 0".
  void wait(int count);

 protected:
  /// Asserts "parent".
  explicit DecoderProxy(const DrivenDecoder* parent);

 private:
  fiber* waiter_ = nullptr;
  int pending_ = 0;  // answers still to come; negative if more have come than awaited
};

}  // namespace zemblar

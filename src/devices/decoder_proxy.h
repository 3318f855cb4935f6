#pragma once

#include "devices/driven_decoder.h"

namespace zemblar {

class fiber;

/// Stands in for a decoder while one command goes out to several devices, and collects their
/// answers.
///
/// Made by Glib::RefPtr inside a fiber; the mask starts full and only ever loses bits, so that what
/// is left after all answers is what every device delivered with the proxy's value. It carries the
/// values of the moment at which it was made.
class DecoderProxy : public DrivenDecoder {
 public:
  static Glib::RefPtr<DecoderProxy> create(const DrivenDecoder* parent);

  /// Collects one answer, and resumes the waiting fiber after the last: the caller must touch
  /// nothing of the fan-out after this.
  void complete(const DecoderUpdate& delivered) override;

  /// Suspends the running fiber until as many answers have come. Answers that came before count.
  /// Asserts "count >= 0".
  void wait(int count);

 protected:
  /// Asserts "parent".
  explicit DecoderProxy(const DrivenDecoder* parent);

 private:
  fiber* waiter_ = nullptr;
  int pending_ = 0;  // answers still to come; negative while more have come than were asked for
};

}  // namespace zemblar

#pragma once

#include <memory>

#include "devices/device.h"
#include "devices/driven_decoder.h"

namespace zemblar {

class Decoder;

/// A speed of 0 for a locomotive that is about to be out of reach: its address, its device or its
/// commands change, or it ends. It goes to where the decoder was addressed until then, and is tried
/// again for some seconds.
class LastStop : public DrivenDecoder {
 public:
  /// Does nothing for a decoder that is to stand, or whose device is out of service.
  static void send(const Decoder& decoder);
  /// The same by a station that drives the decoder besides others.
  static void send_to(Device& station, const Decoder& decoder);

  void complete(const DecoderUpdate& delivered) override;

 private:
  LastStop(const Decoder& decoder, Device& device);
  void request();
  Glib::RefPtr<LastStop> hold();

  Device& device_;
  std::shared_ptr<const bool> device_lives_;
  unsigned attempts_ = 0;
};

}  // namespace zemblar

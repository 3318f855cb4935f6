#pragma once

#include "devices/device_ref.h"
#include "devices/driven_decoder.h"

namespace zemblar {

class Decoder;

/// A last command of speed 0 for a locomotive that is about to be out of reach, because the
/// decoder's address, its device or its enabling changes, or because it ends. The command goes to
/// the address and the device that the decoder has had until then, and is repeated for some seconds
/// if it fails.
class LastStop : public DrivenDecoder {
 public:
  /// Does nothing for a decoder that has speed 0, or whose device is out of service.
  static void send(const Decoder& decoder);
  /// The same through one of several stations that drive the decoder.
  static void send_to(Device& station, const Decoder& decoder);

  void complete(const DecoderUpdate& delivered) override;

 private:
  LastStop(const Decoder& decoder, Device& device);
  void request();
  Glib::RefPtr<LastStop> hold();

  DeviceRef<Device> device_;
  unsigned attempts_ = 0;
};

}  // namespace zemblar

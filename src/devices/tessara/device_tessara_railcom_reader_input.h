#pragma once

#include <array>
#include <string>

#include "devices/railcom/detector.h"

namespace zemblar {

/// One input of a DeviceTessaraRailComReader: the detector of a stretch of track.
///
/// The reader calls everything from `set_state` on, on its poll fiber. A handler of what a call
/// tells may end this input, the reader, and the locomotive. Time passes with the reader's polls:
/// while the reader is out of service no time passes, and detections stay.
///
/// In a layout file: a mapping with its `id`, among the `inputs` of its reader.
class DeviceTessaraRailComReaderInput : public RailComDetector {
 public:
  DeviceTessaraRailComReaderInput();
  /// A null, or a mapping without an `id`, is a new one.
  explicit DeviceTessaraRailComReaderInput(const YAML::Node& node);

  [[nodiscard]] bool keeps_name() const override { return false; }

  /// The state of the reader's link, which is that of the input; the reader says why.
  void follow(const LinkState& link) { set_link(link.phase, {}, link.since); }
  using RailComDetector::set_state;
  /// What was heard after a DCC packet; no bytes when nobody answered.
  void on_packet(const std::string& dcc, const std::string& bytes);
  /// The same as the n-th of the last three answers, the most recently used first. Asserts
  /// "repeat_nr && (repeat_nr < 4)".
  void on_repeat(const std::string& dcc, unsigned repeat_nr);
  /// The answers to come begin without a history.
  void forget_packets() { packets_ = {}; }
  /// So many milliseconds have passed.
  void tick(unsigned ms);

 protected:
  [[nodiscard]] Time now() const override { return ticked_; }
  [[nodiscard]] const Device* dcc_device() const override;

 private:
  void decode_newest(const std::string& dcc);

  std::array<std::string, 3> packets_;  // the last three different answers, newest first
  Time ticked_{0};
};

}  // namespace zemblar

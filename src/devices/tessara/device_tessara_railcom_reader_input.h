#pragma once

#include <array>
#include <map>
#include <string>

#include "core/address.h"
#include "devices/device.h"
#include "devices/railcom/railcom_decoder.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// One input of a DeviceTessaraRailComReader: the detector of a stretch of track.
///
/// It is occupied while current flows, for a quarter of a second after that, which covers the gaps
/// at rail joints and dirty wheels, and while it detects a locomotive. A locomotive is detected
/// from its first RailCom answer until a second after its last. Whose an answer is, the reader's
/// command station knows by the address; one that nobody owns is ignored.
///
/// The reader calls everything from `set_state` on, on its poll fiber. Each call tells what has
/// changed and may therefore end this input, the reader, and the locomotive. The reader's pace
/// counts as time; while it is out of service no time passes here, and what was seen stays.
///
/// In a layout file: a mapping with its `id`, among the `inputs` of its reader.
class DeviceTessaraRailComReaderInput : public Device {
 public:
  DeviceTessaraRailComReaderInput();
  /// A null, or a mapping without an `id`, is a new one.
  explicit DeviceTessaraRailComReaderInput(const YAML::Node& node);

  [[nodiscard]] bool keeps_name() const override { return false; }
  [[nodiscard]] int supports(std::string_view feature) const override;
  [[nodiscard]] bool occupied() const override;
  [[nodiscard]] unsigned orientation() const override;
  /// In the order of their addresses.
  [[nodiscard]] std::vector<Lok*> detected() const override;

  /// The state of the reader's link, which is that of the input; the reader says why.
  void follow(const LinkState& link) { set_link(link.phase, {}, link.since); }
  /// Below 4 (asserted as "state_ < 4"): 0 without current, 1 with current, 2 and 3 with current
  /// and RailCom from one side or the other.
  void set_state(unsigned state);
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
  void on_deleting() override;

 private:
  struct Detection {
    unsigned age;  // milliseconds since the last answer
    Lok* lok;
    ScopedConnection lok_deleted;
  };

  void on_seen(const Address& address);
  void detect(Address address, Lok* lok);
  void drop(Address address);
  void decode_newest(const std::string& dcc);
  void age_detections(unsigned ms);
  [[nodiscard]] Lok* find_lok_of(const Address& address) const;

  std::map<Address, Detection> detections_;
  RailComDecoder decoder_;
  std::array<std::string, 3> packets_;  // the last three different answers, newest first
  unsigned free_time_;                  // milliseconds since it last reported current
  unsigned state_ = 0;
};

}  // namespace zemblar

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/timer.h"
#include "simulator/bus/tessara_device.h"
#include "simulator/trains/track_detector.h"

namespace zemblar::simulator {

/// A simulated RailCom reader on a Tessara bus, with its bus protocol and the inputs connected to
/// the rails.
///
/// What it receives after a DCC packet, and each change of its inputs, is stored as one record
/// until it is polled. An answer that equals one of the input's last three is sent as its index
/// among these, the most recently used first. A reader that is not polled drops its oldest records;
/// its next answer is still consistent with its last one.
///
/// It sends no records before its stream was reset for the first time. Uses the time of
/// runtime/timer.
class ReaderHardware : public TessaraDevice {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// 1 to 256 inputs.
  explicit ReaderHardware(unsigned inputs = 8);
  ~ReaderHardware() override;
  ReaderHardware(const ReaderHardware&) = delete;
  ReaderHardware& operator=(const ReaderHardware&) = delete;

  /// Properties of the hardware; may be changed at any time.
  struct Options {
    std::string kind = "QVRN";
    std::string serial_nr = "RR-0001";
    std::vector<std::uint16_t> speeds = {0x001f};
    std::uint8_t version = 1;
    std::uint8_t encodings = 1;  ///< bit 0 is encoding 0, bit 1 encoding 1

    std::size_t most_records = 256;     ///< stored at the same time
    std::size_t longest_answer = 1000;  ///< bytes after which a poll answer takes no more records
    unsigned other_packets = 0;         ///< packets per second on the track that no decoder answers
    bool empty_records = false;         ///< adds an empty record after each other one
    Milliseconds silence{1000};         ///< time without an answer until the side is unknown again
  };
  Options options;

  /// How it misbehaves, from the next poll on.
  struct Faults {
    std::size_t missing_end = 0;  ///< bytes missing at the end of each poll answer
    std::string garbage;          ///< in place of each poll answer
  };
  Faults faults;

  [[nodiscard]] unsigned input_count() const { return static_cast<unsigned>(inputs_.size()); }
  [[nodiscard]] TrackDetector& input(unsigned index);
  /// The state as reported to the host: 0 free, 1 current, 2 and 3 with answers from side 1 and 2.
  [[nodiscard]] unsigned state(unsigned index) const;

  [[nodiscard]] unsigned speed() const override { return speed_; }
  std::optional<std::string> execute(std::string_view message) override;
  void restart() override;

  [[nodiscard]] bool streaming() const { return streaming_; }
  /// Number of records that were dropped because the reader was not polled.
  [[nodiscard]] std::uint64_t dropped() const { return dropped_; }

 private:
  class Input;
  using States = std::vector<std::uint8_t>;
  /// The events on the track for one packet.
  struct Record {
    std::string dcc;
    States states;
    unsigned input = 0;   // the input that received the answer
    std::string bytes{};  // empty without an answer
  };
  class Writer;

  [[nodiscard]] std::string info() const;
  bool enable(std::string_view map);
  void reset_stream();
  void record(std::string_view dcc, unsigned input, std::string_view bytes);
  void record_change();
  void record_other_packets();
  void add(Record record);
  [[nodiscard]] std::string poll();
  void write(const Record& record, Writer& out);
  [[nodiscard]] States states() const;

  std::vector<std::unique_ptr<Input>> inputs_;
  unsigned speed_ = 0;
  unsigned encoding_ = 0;
  bool streaming_ = false;
  std::deque<Record> records_;
  std::optional<States> told_;        // last sent to the host; no value after a reset of the stream
  Clock::time_point others_until_{};  // packets without an answer are recorded up to this time
  std::uint64_t dropped_ = 0;
};

}  // namespace zemblar::simulator

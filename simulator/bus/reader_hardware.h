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

/// A RailCom reader on a Tessara bus, from the wire's side and from the rails'.
///
/// Whatever it hears after a DCC packet, and whatever changes at its inputs, waits as one record
/// until it is polled. An answer that is one of the last three of its input goes out as its place
/// among those, the most recently used first. A reader that is not polled drops its oldest records;
/// what it tells next still fits what it told last.
///
/// It says nothing before its stream was reset for the first time. Follows runtime/timer.
class ReaderHardware : public TessaraDevice {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// 1 to 256 inputs.
  explicit ReaderHardware(unsigned inputs = 8);
  ~ReaderHardware() override;
  ReaderHardware(const ReaderHardware&) = delete;
  ReaderHardware& operator=(const ReaderHardware&) = delete;

  /// What it is like; may be changed at any time.
  struct Options {
    std::string kind = "QVRN";
    std::string serial_nr = "RR-0001";
    std::vector<std::uint16_t> speeds = {0x001f};
    std::uint8_t version = 1;
    std::uint8_t encodings = 1;  ///< bit 0 is encoding 0, bit 1 encoding 1

    std::size_t most_records = 256;     ///< that wait
    std::size_t longest_answer = 1000;  ///< bytes after which a poll answer takes no more records
    unsigned other_packets = 0;         ///< per second on the track, that nobody answers
    bool empty_records = false;         ///< one after each other record
    Milliseconds silence{1000};         ///< without an answer until the side is unknown again
  };
  Options options;

  /// How it misbehaves, from the next poll on.
  struct Faults {
    std::size_t missing_end = 0;  ///< bytes of each poll answer
    std::string garbage;          ///< in place of each poll answer
  };
  Faults faults;

  [[nodiscard]] unsigned input_count() const { return static_cast<unsigned>(inputs_.size()); }
  [[nodiscard]] TrackDetector& input(unsigned index);
  /// As the host is told: 0 free, 1 current, 2 and 3 with answers from side 1 and 2.
  [[nodiscard]] unsigned state(unsigned index) const;

  [[nodiscard]] unsigned speed() const override { return speed_; }
  std::optional<std::string> execute(std::string_view message) override;
  void restart() override;

  [[nodiscard]] bool streaming() const { return streaming_; }
  /// Records that were dropped because nobody asked.
  [[nodiscard]] std::uint64_t dropped() const { return dropped_; }

 private:
  class Input;
  using States = std::vector<std::uint8_t>;
  /// What happened on the track with one packet.
  struct Record {
    std::string dcc;
    States states;
    unsigned input = 0;   // whose answer it is
    std::string bytes{};  // empty when nobody answered
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
  std::optional<States> told_;        // to the host; none since the stream was reset
  Clock::time_point others_until_{};  // packets that nobody answers are recorded until then
  std::uint64_t dropped_ = 0;
};

}  // namespace zemblar::simulator

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zemblar {

/// Receives the content of a RailCom reader's poll answer, input by input, counted from 0.
///
/// A call returns false to end the reading. The sink must outlive the reading, whatever its calls
/// destroy.
class RailComPollSink {
 public:
  virtual ~RailComPollSink() = default;

  /// Number of inputs, at most 256.
  [[nodiscard]] virtual unsigned input_count() const = 0;
  /// The last state of the input, 0 to 3.
  [[nodiscard]] virtual std::uint8_t state(unsigned input) const = 0;
  virtual bool set_state(unsigned input, std::uint8_t state) = 0;
  /// The bytes received after a DCC packet; empty if no decoder answered.
  virtual bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) = 0;
  /// The answer is the same as the `repeat`-th (1 to 3) of the input's last three answers, the most
  /// recently used first.
  virtual bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) = 0;
};

/// Reads a poll answer in encoding 0: one record for each DCC packet that the reader received from
/// the track. A record has the states of all inputs if one has changed, and the bytes that each
/// input in state 2 or 3 received after the packet. Pure.
///
/// States are passed to the sink as they are read. The former states are asked for only at the
/// beginning, so the calls do not change how the rest is read.
///
/// Throws BitstreamReader::EOS if the answer ends within a record. The part of the record read by
/// then has been passed to the sink: states at once, answers as soon as all their lengths are
/// known.
void read_poll_answer(std::string_view answer, RailComPollSink& sink);

}  // namespace zemblar

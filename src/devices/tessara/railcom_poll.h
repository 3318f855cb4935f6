#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zemblar {

/// Who is told what a RailCom reader's poll answer says, input by input, counted from 0.
///
/// Each call returns whether reading goes on: false when nobody is interested in the rest. It must
/// outlive the reading, whatever else its calls end.
class RailComPollSink {
 public:
  virtual ~RailComPollSink() = default;

  /// At most 256.
  [[nodiscard]] virtual unsigned input_count() const = 0;
  /// What the input was told last, 0 to 3.
  [[nodiscard]] virtual std::uint8_t state(unsigned input) const = 0;
  virtual bool set_state(unsigned input, std::uint8_t state) = 0;
  /// What was heard after a DCC packet; no bytes when nobody answered.
  virtual bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) = 0;
  /// The same as the `repeat`-th of the input's last three answers, the most recently used first;
  /// 1 to 3.
  virtual bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) = 0;
};

/// Reads a poll answer in encoding 0, a run of records: one for each DCC packet that the reader saw
/// on the track, with the states of all inputs if one has changed, and with what each input of
/// state 2 or 3 heard after the packet. Pure.
///
/// The states of a record are told as they are read. They are asked for at the beginning only: what
/// the calls bring about does not change how the rest is read.
///
/// Throws BitstreamReader::EOS when the answer ends within a record. What had been read of that one
/// has been told: states at once, answers when all their lengths are known.
void read_poll_answer(std::string_view answer, RailComPollSink& sink);

}  // namespace zemblar

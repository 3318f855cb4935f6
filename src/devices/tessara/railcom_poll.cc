#include "devices/tessara/railcom_poll.h"

#include <array>
#include <cassert>

#include "devices/tessara/bitstream_reader.h"

namespace zemblar {
namespace {

// Fields of the first byte of a record.
constexpr unsigned is_empty = 0x80;
constexpr unsigned has_states = 0x40;
constexpr unsigned packet_size = 0x3f;  // the size minus one

constexpr unsigned state_bits = 2;
constexpr unsigned repeat_bits = 2;
constexpr unsigned length_bits = 4;
constexpr unsigned highest_silent_state = 1;

/// Reads the records of an answer. Its steps return whether reading continues.
class Records {
 public:
  Records(std::string_view answer, RailComPollSink& sink)
      : stream_(answer), sink_(sink), input_count_(sink.input_count()) {
    for (unsigned input = 0; input < input_count_; ++input) take_state(input, sink.state(input));
  }

  [[nodiscard]] bool at_end() const { return stream_.eos(); }

  bool read_record() {
    const unsigned head = stream_.read_byte();
    if (head & is_empty) return true;
    dcc_ = stream_.read_bytes((head & packet_size) + 1);
    if ((head & has_states) && !read_states()) return false;
    read_repeats();
    read_lengths();
    return read_answers();
  }

 private:
  bool read_states() {
    heard_count_ = 0;
    for (unsigned input = 0; input < input_count_; ++input) {
      const auto state = static_cast<std::uint8_t>(stream_.read_bits(state_bits));
      take_state(input, state);
      if (!sink_.set_state(input, state)) return false;
    }
    stream_.align();
    return true;
  }

  void take_state(unsigned input, unsigned state) {
    if (state > highest_silent_state) heard_[heard_count_++] = input;
  }

  void read_repeats() {
    auto& repeats = repeats_;
    for (unsigned i = 0; i < heard_count_; ++i) {
      repeats[i] = stream_.read_bits(repeat_bits);
      assert(repeats[i] < 4);
    }
    stream_.align();
  }

  void read_lengths() {
    for (unsigned i = 0; i < heard_count_; ++i) {
      if (repeats_[i] == 0) lengths_[i] = stream_.read_bits(length_bits);
    }
    stream_.align();
  }

  bool read_answers() {
    for (unsigned i = 0; i < heard_count_; ++i) {
      if (!read_answer(i)) return false;
    }
    return true;
  }

  // Skips reading 0 bytes, which would throw at the end of the stream.
  bool read_answer(unsigned i) {
    const auto input = heard_[i];
    if (repeats_[i] > 0) return sink_.on_repeat(input, dcc_, repeats_[i]);
    if (lengths_[i] == 0) return sink_.on_packet(input, dcc_, {});
    return sink_.on_packet(input, dcc_, stream_.read_bytes(lengths_[i]));
  }

  BitstreamReader stream_;
  RailComPollSink& sink_;
  unsigned input_count_;
  std::string dcc_;  // DCC packet of the present record
  // The inputs in state 2 or 3, and their answers in the present record.
  unsigned heard_count_ = 0;
  std::array<unsigned, 256> heard_;
  std::array<unsigned, 256> repeats_;
  std::array<unsigned, 256> lengths_;
};

}  // namespace

void read_poll_answer(std::string_view answer, RailComPollSink& sink) {
  Records records(answer, sink);
  while (!records.at_end() && records.read_record()) {
  }
}

}  // namespace zemblar

#include "devices/railcom_poll.h"

#include <array>
#include <cassert>

#include "devices/bitstream_reader.h"

namespace zemblar {
namespace {

// The first byte of a record.
constexpr unsigned is_empty = 0x80;
constexpr unsigned has_states = 0x40;
constexpr unsigned packet_size = 0x3f;  // less one

constexpr unsigned state_bits = 2;
constexpr unsigned repeat_bits = 2;
constexpr unsigned length_bits = 4;
constexpr unsigned highest_silent_state = 1;

/// The records of an answer, one after the other. Its steps say whether reading goes on.
class Records {
 public:
  Records(std::string_view answer, RailComPollSink& sink)
      : stream_(answer), sink_(sink), input_count_(sink.input_count()) {}

  [[nodiscard]] bool at_end() const { return stream_.eos(); }

  bool read_record() {
    const unsigned head = stream_.read_byte();
    if (head & is_empty) return true;
    dcc_ = stream_.read_bytes((head & packet_size) + 1);
    heard_count_ = 0;
    if (head & has_states) {
      if (!read_states()) return false;
    } else {
      ask_states();
    }
    read_repeats();
    read_lengths();
    return read_answers();
  }

 private:
  /// An input of which the record says what it heard.
  struct Heard {
    unsigned input;
    unsigned repeat;
    unsigned length;
  };

  bool read_states() {
    for (unsigned input = 0; input < input_count_; ++input) {
      const auto state = static_cast<std::uint8_t>(stream_.read_bits(state_bits));
      take_state(input, state);
      if (!sink_.set_state(input, state)) return false;
    }
    stream_.align();
    return true;
  }

  void ask_states() {
    for (unsigned input = 0; input < input_count_; ++input) take_state(input, sink_.state(input));
  }

  void take_state(unsigned input, unsigned state) {
    if (state > highest_silent_state) heard_[heard_count_++] = {input, 0, 0};
  }

  void read_repeats() {
    for (unsigned i = 0; i < heard_count_; ++i) {
      heard_[i].repeat = stream_.read_bits(repeat_bits);
      assert(heard_[i].repeat < 4);
    }
    stream_.align();
  }

  void read_lengths() {
    for (unsigned i = 0; i < heard_count_; ++i) {
      if (heard_[i].repeat == 0) heard_[i].length = stream_.read_bits(length_bits);
    }
    stream_.align();
  }

  bool read_answers() {
    for (unsigned i = 0; i < heard_count_; ++i) {
      if (!read_answer(heard_[i])) return false;
    }
    return true;
  }

  // Nothing is read for no bytes: at the end of the stream there would be none to read.
  bool read_answer(const Heard& heard) {
    if (heard.repeat > 0) return sink_.on_repeat(heard.input, dcc_, heard.repeat);
    if (heard.length == 0) return sink_.on_packet(heard.input, dcc_, {});
    return sink_.on_packet(heard.input, dcc_, stream_.read_bytes(heard.length));
  }

  BitstreamReader stream_;
  RailComPollSink& sink_;
  unsigned input_count_;
  std::string dcc_;  // the packet of the present record
  std::array<Heard, 256> heard_;
  unsigned heard_count_ = 0;
};

}  // namespace

void read_poll_answer(std::string_view answer, RailComPollSink& sink) {
  Records records(answer, sink);
  while (!records.at_end() && records.read_record()) {
  }
}

}  // namespace zemblar

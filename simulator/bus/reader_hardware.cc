#include "simulator/bus/reader_hardware.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "simulator/trains/railcom_encoder.h"

namespace zemblar::simulator {
namespace {

// The first byte of a message.
constexpr char get_info = 0x00;
constexpr char get_identity = 0x01;
constexpr char get_serial = 0x02;
constexpr char use_speed = 0x04;
constexpr char use_encoding = 0x06;
constexpr char enable_inputs = 0x08;
constexpr char reset = 0x09;
constexpr char get_records = 0x0a;

// The first byte of a record.
constexpr unsigned is_empty = 0x80;
constexpr unsigned has_states = 0x40;
constexpr std::size_t longest_packet = 64;

constexpr std::size_t remembered = 3;
constexpr std::size_t longest_railcom = 15;  // what four bits can count

std::uint8_t byte(char c) {
  return static_cast<std::uint8_t>(c);
}

}  // namespace

// --- Inputs ---

/// One stretch of track.
class ReaderHardware::Input : public TrackDetector {
 public:
  Input(ReaderHardware& reader, unsigned index) : reader_(reader), index_(index) {}

  void set_current(bool on, unsigned side) override {
    const auto before = state();
    current_ = on;
    if (!on) {
      silence_.cancel();
      side_ = 0;
    } else if (side != 0) {
      side_ = side;
    }
    if (state() != before) reader_.record_change();
  }
  void receive(std::string_view dcc, std::string_view bytes) override {
    if (!current_) return;
    if (!bytes.empty()) {
      silence_ = Timeout::once(reader_.options.silence, [this] { reader_.record_change(); });
    }
    reader_.record(dcc, index_, bytes);
  }
  bool current() const override { return current_; }
  unsigned side() const override { return side_; }

  // An answer has a side even where the track does not say which.
  std::uint8_t state() const {
    if (!enabled || !current_) return 0;
    if (!silence_.armed()) return 1;
    return side_ == 2 ? 3 : 2;
  }

  /// Where the bytes stand among the last answers, from 1, or 0 when they are new. Either way they
  /// come to the front.
  unsigned place_of(const std::string& bytes) {
    const auto found = std::ranges::find(last_, bytes);
    const auto place = found == last_.end() ? 0 : found - last_.begin() + 1;
    if (place > 0) {
      last_.erase(found);
    } else if (last_.size() == remembered) {
      last_.pop_back();
    }
    last_.push_front(bytes);
    return static_cast<unsigned>(place);
  }
  void forget_answers() { last_.clear(); }

  bool enabled = true;

 private:
  ReaderHardware& reader_;
  unsigned index_;
  bool current_ = false;
  unsigned side_ = 0;
  Timeout silence_;  // armed while a decoder answers
  std::deque<std::string> last_;
};

ReaderHardware::ReaderHardware(unsigned inputs) {
  assert(inputs >= 1 && inputs <= 256);
  for (unsigned i = 0; i < inputs; ++i) inputs_.push_back(std::make_unique<Input>(*this, i));
}

ReaderHardware::~ReaderHardware() = default;

TrackDetector& ReaderHardware::input(unsigned index) {
  return *inputs_.at(index);
}

unsigned ReaderHardware::state(unsigned index) const {
  return inputs_.at(index)->state();
}

ReaderHardware::States ReaderHardware::states() const {
  States states;
  for (const auto& input : inputs_) states.push_back(input->state());
  return states;
}

// --- Commands ---

std::optional<std::string> ReaderHardware::execute(std::string_view message) {
  const auto is = [message](char command, std::size_t length) {
    return message[0] == command && message.size() == length;
  };
  if (message.empty()) return {};
  if (is(get_info, 1)) return info();
  if (is(get_identity, 1)) return options.kind;
  if (is(get_serial, 1)) return options.serial_nr;
  if (is(get_records, 1)) return poll();
  bool done = false;
  if (is(use_speed, 2) && has_speed(options.speeds, byte(message[1]))) {
    speed_ = byte(message[1]);
    done = true;
  } else if (is(use_encoding, 2) && byte(message[1]) < 8) {
    done = (options.encodings >> byte(message[1]) & 1) != 0;
    if (done) encoding_ = byte(message[1]);
  } else if (message[0] == enable_inputs) {
    done = enable(message.substr(1));
  } else if (is(reset, 1)) {
    reset_stream();
    done = true;
  }
  if (!done) return {};
  return "";
}

std::string ReaderHardware::info() const {
  auto info = tessara_info(options.kind, options.speeds);
  constexpr unsigned unused = 0;
  for (const unsigned value :
       {unsigned{options.version}, unused, input_count() - 1, unsigned{options.encodings}}) {
    info += static_cast<char>(value);
  }
  return info;
}

bool ReaderHardware::enable(std::string_view map) {
  if (map.size() != (inputs_.size() + 7) / 8) return false;
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    inputs_[i]->enabled = (byte(map[i / 8]) >> i % 8 & 1) != 0;
  }
  record_change();
  return true;
}

void ReaderHardware::restart() {
  speed_ = 0;
  encoding_ = 0;
  streaming_ = false;
  records_.clear();
  for (const auto& input : inputs_) input->enabled = true;
}

// The states go out with the next packet on the track, and there is always one soon.
void ReaderHardware::reset_stream() {
  streaming_ = true;
  records_.clear();
  told_.reset();
  others_until_ = Clock::now();
  for (const auto& input : inputs_) input->forget_answers();
  record_change();
}

// --- Records ---

void ReaderHardware::record(std::string_view dcc, unsigned input, std::string_view bytes) {
  assert(!dcc.empty() && dcc.size() <= longest_packet && bytes.size() <= longest_railcom);
  if (!streaming_) return;
  record_other_packets();
  add({std::string(dcc), states(), input, std::string(bytes)});
}

void ReaderHardware::record_change() {
  record(idle_packet(), 0, {});
}

// Those since something else happened, so that they need no timer. Nothing has changed meanwhile.
void ReaderHardware::record_other_packets() {
  const auto now = Clock::now();
  const std::chrono::duration<double> time = now - others_until_;
  const auto count = static_cast<std::uint64_t>(time.count() * options.other_packets);
  if (count == 0 || (records_.empty() && !told_)) return;
  others_until_ = now;
  const States states = records_.empty() ? *told_ : records_.back().states;
  const auto kept = std::min<std::uint64_t>(count, options.most_records);
  dropped_ += count - kept;
  for (std::uint64_t i = 0; i < kept; ++i) add({idle_packet(), states});
}

void ReaderHardware::add(Record record) {
  records_.push_back(std::move(record));
  if (records_.size() <= options.most_records) return;
  records_.pop_front();
  ++dropped_;
}

/// Whole bytes, and fields of some bits that fill a byte from its least significant bit up. No
/// field may cross the border of a byte.
class ReaderHardware::Writer {
 public:
  void put_byte(unsigned value) {
    align();
    bytes_ += static_cast<char>(value);
  }
  void put_bytes(std::string_view bytes) {
    align();
    bytes_ += bytes;
  }
  void put_bits(unsigned value, unsigned count) {
    assert(used_ + count <= 8 && value < 1u << count);
    if (used_ == 0) bytes_ += '\0';
    bytes_.back() = static_cast<char>(byte(bytes_.back()) | value << used_);
    used_ = (used_ + count) % 8;
  }
  void align() { used_ = 0; }

  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
  unsigned used_ = 0;  // bits of the last byte; 0 when it is full
};

std::string ReaderHardware::poll() {
  if (!streaming_) return {};
  if (encoding_ != 0) {
    records_.clear();
    return {static_cast<char>(is_empty)};
  }
  record_other_packets();
  Writer out;
  while (!records_.empty() && out.bytes().size() < options.longest_answer) {
    write(records_.front(), out);
    records_.pop_front();
    if (options.empty_records) out.put_byte(is_empty);
  }
  auto answer = faults.garbage.empty() ? out.bytes() : faults.garbage;
  answer.resize(answer.size() - std::min(answer.size(), faults.missing_end));
  return answer;
}

void ReaderHardware::write(const Record& record, Writer& out) {
  const bool changed = told_ != record.states;
  const auto head = static_cast<unsigned>(record.dcc.size() - 1) | (changed ? has_states : 0);
  out.put_byte(head);
  out.put_bytes(record.dcc);
  if (changed) {
    for (const auto state : record.states) out.put_bits(state, 2);
    told_ = record.states;
  }
  std::vector<std::string> fresh;
  out.align();
  for (unsigned i = 0; i < record.states.size(); ++i) {
    if (record.states[i] <= 1) continue;
    const auto answer = i == record.input ? record.bytes : std::string();
    const auto place = inputs_[i]->place_of(answer);
    out.put_bits(place, 2);
    if (place == 0) fresh.push_back(answer);
  }
  out.align();
  for (const auto& answer : fresh) out.put_bits(static_cast<unsigned>(answer.size()), 4);
  for (const auto& answer : fresh) out.put_bytes(answer);
  out.align();
}

}  // namespace zemblar::simulator

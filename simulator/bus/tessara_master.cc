#include "simulator/bus/tessara_master.h"

#include <algorithm>
#include <cassert>

#include "simulator/stations/hex.h"

namespace zemblar::simulator {
namespace {

using std::chrono::microseconds;

constexpr microseconds byte_time{87};      // ten bits at 115200 baud
constexpr std::size_t longest_piece = 62;  // bytes in one packet of a USB serial chip

// What every device understands.
constexpr char get_info = 0x00;
constexpr char get_identity = 0x01;
constexpr char get_serial = 0x02;
constexpr char use_speed = 0x04;
// What the master alone understands.
constexpr char get_speed_of = 0x06;
constexpr char set_speed_of = 0x07;
constexpr char middle_part = 0x08;
constexpr char last_part = 0x09;
constexpr char first_part = 0x0a;
constexpr char whole_message = 0x0b;
constexpr char fetch_answer = 0x0c;

std::uint8_t byte(char c) {
  return static_cast<std::uint8_t>(c);
}

}  // namespace

TessaraMaster::TessaraMaster(SerialCable& cable) : cable_(cable) {
  cable_.on_bytes([this](std::string_view bytes) {
    if (cable_.dtr()) frame_ += bytes;
  });
  cable_.on_dtr([this](bool on) { on_dtr(on); });
}

TessaraMaster::~TessaraMaster() {
  cable_.on_bytes({});
  cable_.on_dtr({});
}

void TessaraMaster::restart() {
  next_.cancel();
  cable_.lines = {};
  frame_.clear();
  message_.reset();
  speeds_ = {};
  for (const auto& [address, device] : devices_) device->restart();
}

void TessaraMaster::end_faults() {
  faults = {};
  if (!next_.armed()) cable_.lines.dsr = false;
}

// --- Frames ---

void TessaraMaster::on_dtr(bool on) {
  if (!on) return execute_frame();
  frame_.clear();
  next_.cancel();
  cable_.lines = {};
}

void TessaraMaster::execute_frame() {
  const auto frame = std::exchange(frame_, {});
  if (frame.empty() || !cable_.is_open() || faults.silent) return;
  ++frame_count_;
  if (faults.errors > 0) {
    --faults.errors;
    return start_answer({}, true);
  }
  auto answer = execute(frame);
  start_answer(answer.value_or(""), !answer);
}

TessaraMaster::Answer TessaraMaster::execute(std::string_view frame) {
  const auto is = [frame](char command, std::size_t length) {
    return frame[0] == command && frame.size() == length;
  };
  const auto rest = frame.substr(1);
  if (frame[0] == whole_message || frame[0] == first_part) {
    return begin_message(rest, frame[0] == whole_message);
  }
  if (frame[0] == last_part || frame[0] == middle_part) return go_on(rest, frame[0] == last_part);
  if (is(fetch_answer, 1)) return fetch();
  if (log) frames_.push_back(hex(frame));
  if (is(get_info, 1)) {
    auto info = tessara_info(options.kind, options.speeds);
    for (const auto value : {options.version, options.speed_scan, options.max_speed}) {
      info += static_cast<char>(value);
    }
    return info;
  }
  if (is(get_identity, 1)) return options.kind;
  if (is(get_serial, 1)) return options.serial_nr;
  if (is(use_speed, 2) && has_speed(options.speeds, byte(frame[1]))) return "";
  if (is(get_speed_of, 2)) return std::string{static_cast<char>(speeds_[byte(frame[1])])};
  if (is(set_speed_of, 3)) return set_speed(byte(frame[1]), byte(frame[2]));
  return {};
}

TessaraMaster::Answer TessaraMaster::set_speed(unsigned address, unsigned index) {
  if (index > options.max_speed) return {};
  speeds_[address] = static_cast<std::uint8_t>(index);
  return "";
}

// --- Messages to devices ---

TessaraMaster::Answer TessaraMaster::begin_message(std::string_view frame, bool last) {
  if (frame.empty()) return {};
  message_ = Message{byte(frame[0])};
  return take(1, frame.substr(1), last);
}

TessaraMaster::Answer TessaraMaster::go_on(std::string_view bytes, bool last) {
  if (!message_ || message_->delivered) return {};
  return take(0, bytes, last);
}

/// The count of what was taken, as two bytes, the more significant one first.
TessaraMaster::Answer TessaraMaster::take(std::size_t address_bytes, std::string_view bytes,
                                          bool last) {
  assert(options.capacity > 0);
  std::size_t count = 0;
  if (!faults.never_ready && refusals_ >= options.not_ready) {
    count = std::min(options.capacity, address_bytes + bytes.size());
    refusals_ = 0;
    message_->bytes += bytes.substr(0, count - address_bytes);
    message_->all_taken = count == address_bytes + bytes.size();
    if (last && message_->all_taken) deliver();
  } else {
    ++refusals_;
    message_->all_taken = false;
  }
  return std::string{static_cast<char>(count >> 8), static_cast<char>(count & 0xff)};
}

void TessaraMaster::deliver() {
  auto& [address, bytes, all_taken, delivered, answered, status, answer] = *message_;
  delivered = true;
  if (log) messages_[address].push_back(hex(bytes));
  const auto found = devices_.find(address);
  if (found == devices_.end() || found->second->speed() != speeds_[address] || bytes.empty()) {
    status = Status::absent;
    answered = Clock::now() + options.absence;
    return;
  }
  auto said = found->second->execute(bytes);
  status = said ? Status::complete : Status::refused;
  answer = std::move(said).value_or("");
  answered = Clock::now() + options.device_delay;
}

// A message whose last frame was taken as a whole needs no other frame to say so.
TessaraMaster::Answer TessaraMaster::fetch() {
  if (message_ && !message_->delivered && message_->all_taken) deliver();
  if (!message_ || !message_->delivered) return {};
  const auto reply = [](Status status) { return std::string{static_cast<char>(status)}; };
  if (faults.never_done || Clock::now() < message_->answered) return reply(Status::more);
  assert(options.piece > 0);
  const auto piece = message_->answer.substr(0, options.piece);
  message_->answer.erase(0, piece.size());
  if (!message_->answer.empty()) return reply(Status::more) + piece;
  const auto status = message_->status;
  message_.reset();
  return reply(status) + piece;
}

// --- Answers ---

void TessaraMaster::start_answer(std::string bytes, bool error) {
  if (faults.lost_byte < bytes.size()) bytes.erase(faults.lost_byte, 1);
  outgoing_ = std::move(bytes);
  error_ = error;
  cable_.lines.dsr = true;
  if (faults.cut_at != no_byte) outgoing_.resize(std::min(outgoing_.size(), faults.cut_at));
  next_ = Timeout::once(options.delay, [this] { send_piece(); });
}

void TessaraMaster::send_piece() {
  const auto piece = outgoing_.substr(0, longest_piece);
  outgoing_.erase(0, piece.size());
  const auto time = std::chrono::ceil<Milliseconds>(byte_time * piece.size());
  next_ = Timeout::once(time, [this, piece] {
    cable_.send(piece);
    outgoing_.empty() ? end_answer() : send_piece();
  });
}

void TessaraMaster::end_answer() {
  if (std::exchange(faults.cut_at, no_byte) != no_byte) return cable_.unplug();
  cable_.lines.dsr = faults.endless;
  cable_.lines.ri = error_;
}

}  // namespace zemblar::simulator

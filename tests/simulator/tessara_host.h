#pragma once

#include <memory>
#include <string>
#include <utility>

#include "runtime/timer.h"
#include "simulator/bus/serial_cable.h"

namespace zemblar::simulator::test {

inline std::string from_hex(std::string_view text) {
  const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes += static_cast<char>(digit(text[i]) << 4 | digit(text[i + 1]));
  }
  return bytes;
}

/// The host's end of the line, straight from the description of the wire.
class TessaraHost {
 public:
  TessaraHost(VirtualClock& clock, SerialCable& cable) : clock_(clock), line_(cable.plug()) {
    (void)line_->open("memory", {.baud = 115200});
  }

  struct Reply {
    std::string bytes{};
    bool error = false;
    bool ended = true;  // false when it was still going on after a second, or was cut off
  };

  /// One frame and the answer to it.
  Reply exchange(const std::string& frame) {
    line_->set_dtr(true);
    (void)line_->write(frame.data(), frame.size());
    clock_.advance(std::chrono::milliseconds(20));
    line_->set_dtr(false);
    Reply reply;
    int quiet = 0;
    for (int round = 0; round < 200; ++round) {
      clock_.advance(std::chrono::milliseconds(5));
      const auto [bytes, error] = read();
      reply.bytes += bytes;
      if (error != 0 && error != EAGAIN) break;
      if (!bytes.empty() || line_->modem_lines().dsr || ++quiet < 2) continue;
      reply.error = line_->modem_lines().ri;
      return reply;
    }
    reply.ended = false;
    return reply;
  }

  /// A message for a device behind the master, in as many parts as the master wants it in.
  Reply relay(std::uint8_t address, const std::string& message) {
    const std::string to(1, static_cast<char>(address));
    const bool whole = message.size() < 254;
    std::size_t sent = 0;
    while (sent == 0) {
      sent = count(exchange((whole ? "\x0b" : "\x0a") + to + message.substr(0, 254)));
    }
    while (sent < message.size() + 1) {
      const auto left = message.size() + 1 - sent;
      const auto part = (left < 255 ? "\x09" : "\x08") + message.substr(sent - 1, 255);
      sent += count(exchange(part));
    }
    return fetch();
  }
  /// The answer; `error` when the status says that there is none.
  Reply fetch() {
    std::string answer;
    for (int round = 0; round < 1000; ++round) {
      const auto reply = exchange("\x0c");
      if (reply.error || reply.bytes.empty()) return {answer, true, reply.ended};
      answer += reply.bytes.substr(1);
      if (reply.bytes[0] == 0) return {answer};
      if (reply.bytes[0] != 1) return {answer, true};
    }
    return {answer, false, false};
  }

 private:
  static std::size_t count(const Reply& reply) {
    if (reply.bytes.size() != 2) return no_end;
    return static_cast<std::size_t>(static_cast<unsigned char>(reply.bytes[0]) << 8 |
                                    static_cast<unsigned char>(reply.bytes[1]));
  }
  std::pair<std::string, int> read() {
    std::string bytes(256, '\0');
    const auto [length, error] = line_->read(bytes.data(), bytes.size());
    bytes.resize(length);
    return {bytes, error};
  }

  static constexpr std::size_t no_end = 1 << 20;

  VirtualClock& clock_;
  std::unique_ptr<SerialLine> line_;
};

}  // namespace zemblar::simulator::test

#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/stations/xpressnet_station.h"

namespace zemblar::simulator {

/// A simulated LI-USB with its station.
///
///     LiUsbInterface liusb(after, [&](std::string_view bytes) { terminal.send(bytes); });
///     terminal.on_bytes([&](std::string_view bytes) { liusb.receive(bytes); });
///
/// Works with any transport of bytes. The time comes from a function given to the constructor, so
/// that delays can use the main loop or the clock of a test. One thread.
class LiUsbInterface {
 public:
  using Milliseconds = std::chrono::milliseconds;
  using Message = XpressNetStation::Message;
  /// Calls the function once after the time; calls due at the same time in the order of requests.
  using After = std::function<void(Milliseconds, std::function<void()>)>;
  using Send = std::function<void(std::string_view)>;

  LiUsbInterface(After after, Send send) : after_(std::move(after)), send_(std::move(send)) {}

  /// The faults; changes take effect with the next request.
  struct Faults {
    bool silent = false;              ///< ignores all requests
    bool mute = false;                ///< carries out requests without answering
    Milliseconds late{2};             ///< until an answer
    std::size_t lost_byte = no_byte;  ///< of each answer, counted from 0, does not arrive
    std::string garbage;              ///< bytes before each answer
    bool broadcasts = false;          ///< broadcasts its track power before each answer
    bool pieces = false;              ///< answers byte by byte, a millisecond each
    /// Requests that are lost: those that begin with the bytes of one of these numbers.
    std::vector<std::uint32_t> deaf_to{};
    /// Requests that are answered "not understood" and have no effect, told in the same way.
    std::vector<std::uint32_t> refused{};
    /// Answers instead of its own, by the first byte of the request.
    std::map<std::uint8_t, Message> answers;
  };
  static constexpr std::size_t no_byte = static_cast<std::size_t>(-1);
  Faults faults;

  /// Takes bytes from the program, in any pieces.
  void receive(std::string_view bytes);
  /// Unplugs the interface: bytes on their way are lost.
  void lose_power();
  /// Broadcasts a message about an action of a hand throttle or of the station itself.
  void broadcast(const Message& message);

  /// Called with each request that the station has carried out.
  void on_executed(std::function<void(const Message&)> observer) {
    observer_ = std::move(observer);
  }

  XpressNetStation station;
  /// Takes the requests so far out of the log, as `hex` writes them. Bytes that are no request
  /// stand there as "? ff".
  std::vector<std::string> take_requests() { return std::exchange(requests_, {}); }

 private:
  bool take_request();
  void execute(const Message& request);
  [[nodiscard]] XpressNetStation::Reaction react(const Message& request);
  void answer(const XpressNetStation::Reaction& reaction);
  void emit_after(Milliseconds time, const std::string& bytes);
  void emit(const std::string& bytes);

  After after_;
  Send send_;
  std::function<void(const Message&)> observer_;
  std::shared_ptr<char> life_ =
      std::make_shared<char>();  // replaced at each loss of power, so that pending answers expire
  std::string received_;
  std::vector<std::string> requests_;
};

}  // namespace zemblar::simulator

#pragma once

#include <optional>
#include <string>
#include <utility>

namespace zemblar {

/// One end of the channel between the program and its guard: datagrams that keep their order and
/// may carry a descriptor (a local socket of type SOCK_SEQPACKET). The end of either process closes
/// the channel, however the process ends.
class GuardChannel {
 public:
  struct Datagram {
    std::string bytes{};
    int descriptor = -1;  ///< the receiver's from now on; -1 for none
  };

  /// Takes the descriptor.
  explicit GuardChannel(int descriptor) : descriptor_(descriptor) {}
  ~GuardChannel();
  GuardChannel(GuardChannel&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  GuardChannel& operator=(GuardChannel&& other) noexcept;

  /// Two ends, neither of which goes to other processes by itself. Throws std::system_error.
  [[nodiscard]] static std::pair<GuardChannel, GuardChannel> make_pair();

  /// Sends a copy of the descriptor, unless it is -1. Never waits. False when the other end has
  /// gone or does not read.
  bool send(const std::string& bytes, int descriptor = -1) const;
  /// Waits for a datagram. None when the other end has gone.
  [[nodiscard]] std::optional<Datagram> receive() const;

  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace zemblar

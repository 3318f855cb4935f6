#pragma once

#include <optional>
#include <string>
#include <utility>

namespace zemblar {

/// One end of the channel between the program and its guard: a local socket of type SOCK_SEQPACKET.
/// Datagrams keep their order and may carry a file descriptor. The channel closes when either
/// process ends, however it ends.
class GuardChannel {
 public:
  struct Datagram {
    std::string bytes{};
    int descriptor = -1;  ///< owned by the receiver; -1 for none
  };

  /// Takes ownership of the descriptor.
  explicit GuardChannel(int descriptor) : descriptor_(descriptor) {}
  ~GuardChannel();
  GuardChannel(GuardChannel&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  GuardChannel& operator=(GuardChannel&& other) noexcept;

  /// The two ends of a new channel. Child processes do not inherit them. Throws std::system_error.
  [[nodiscard]] static std::pair<GuardChannel, GuardChannel> make_pair();

  /// Sends the bytes, and a copy of the descriptor unless it is -1. Never blocks. False when the
  /// other end is closed, or does not read.
  bool send(const std::string& bytes, int descriptor = -1) const;
  /// Blocks until a datagram arrives. No value when the other end is closed.
  [[nodiscard]] std::optional<Datagram> receive() const;

  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace zemblar

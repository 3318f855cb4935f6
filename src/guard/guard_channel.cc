#include "guard/guard_channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace zemblar {
namespace {

constexpr std::size_t longest = 4096;

/// Buffer for the control message that carries one descriptor.
struct Control {
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> bytes{};
};

void attach(msghdr& message, Control& control, int descriptor) {
  message.msg_control = control.bytes.data();
  message.msg_controllen = control.bytes.size();
  auto* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  std::memcpy(CMSG_DATA(header), &descriptor, sizeof(int));
}

int attached(msghdr& message) {
  const auto* header = CMSG_FIRSTHDR(&message);
  if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) return -1;
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(header), sizeof(int));
  return descriptor;
}

}  // namespace

GuardChannel::~GuardChannel() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

GuardChannel& GuardChannel::operator=(GuardChannel&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

std::pair<GuardChannel, GuardChannel> GuardChannel::make_pair() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return {GuardChannel(ends[0]), GuardChannel(ends[1])};
}

bool GuardChannel::send(const std::string& bytes, int descriptor) const {
  iovec part{const_cast<char*>(bytes.data()), bytes.size()};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  Control control;
  if (descriptor >= 0) attach(message, control, descriptor);
  ssize_t sent = -1;
  do {
    sent = ::sendmsg(descriptor_, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (sent < 0 && errno == EINTR);
  return sent >= 0;
}

std::optional<GuardChannel::Datagram> GuardChannel::receive() const {
  Datagram datagram{.bytes = std::string(longest, '\0')};
  iovec part{datagram.bytes.data(), datagram.bytes.size()};
  Control control;
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.bytes.data();
  message.msg_controllen = control.bytes.size();
  ssize_t received = -1;
  do {
    received = ::recvmsg(descriptor_, &message, MSG_CMSG_CLOEXEC);
  } while (received < 0 && errno == EINTR);
  if (received <= 0) return std::nullopt;
  datagram.bytes.resize(static_cast<std::size_t>(received));
  datagram.descriptor = attached(message);
  return datagram;
}

}  // namespace zemblar

#include "core/recovery_slot.h"

#include <fcntl.h>
#include <glib/gstdio.h>
#include <glibmm/miscutils.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

namespace zemblar {
namespace {

constexpr unsigned lock_count = 16;

// Returned by `lock` instead of a descriptor.
constexpr int cannot_open = -1;
constexpr int is_taken = -2;
constexpr int is_missing = -3;

/// True if the process from whose id the number is derived has ended.
bool has_ended(unsigned number) {
  return ::kill(static_cast<pid_t>(number - lock_count), 0) != 0 && errno == ESRCH;
}

}  // namespace

RecoverySlot::RecoverySlot(std::string folder)
    : folder_(std::move(folder)), number_(lock_count + static_cast<unsigned>(::getpid())) {
  g_mkdir_with_parents(Glib::path_get_dirname(folder_).c_str(), 0700);
  for (unsigned number = 0; number < lock_count && lock_ < 0; ++number) {
    lock_ = lock(number, O_CREAT);
    if (lock_ >= 0) number_ = number;
  }
}

RecoverySlot::~RecoverySlot() {
  if (lock_ >= 0) ::close(lock_);
}

int RecoverySlot::lock(unsigned number, int create) const {
  const auto file = folder_ + ".lock-" + std::to_string(number);
  const int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | create;
  const int descriptor = ::open(file.c_str(), flags, 0600);
  if (descriptor < 0) return errno == ENOENT ? is_missing : cannot_open;
  if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
  ::close(descriptor);
  return is_taken;
}

// A lock file that cannot be opened belongs to another user, and may be locked.
bool RecoverySlot::is_free(unsigned number) const {
  if (number == number_) return true;
  if (number >= lock_count) return has_ended(number);
  const int descriptor = lock(number, 0);
  if (descriptor >= 0) ::close(descriptor);
  return descriptor >= 0 || descriptor == is_missing;
}

}  // namespace zemblar

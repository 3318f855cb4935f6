#include "core/recovery_slot.h"

#include <fcntl.h>
#include <glib/gstdio.h>
#include <glibmm/miscutils.h>
#include <sys/file.h>
#include <unistd.h>

#include <utility>

namespace zemblar {
namespace {

constexpr unsigned slot_count = 16;

// In the place of a descriptor.
constexpr int cannot_open = -1;
constexpr int is_taken = -2;

}  // namespace

RecoverySlot::RecoverySlot(std::string folder) : folder_(std::move(folder)) {
  g_mkdir_with_parents(Glib::path_get_dirname(folder_).c_str(), 0700);
  for (unsigned number = 0; number < slot_count; ++number) {
    const int descriptor = lock(number, O_CREAT);
    if (descriptor == is_taken) continue;
    if (descriptor != cannot_open) number_ = number;
    lock_ = descriptor;
    return;
  }
}

RecoverySlot::~RecoverySlot() {
  if (lock_ >= 0) ::close(lock_);
}

int RecoverySlot::lock(unsigned number, int create) const {
  const auto file = folder_ + ".lock-" + std::to_string(number);
  const int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | create;
  const int descriptor = ::open(file.c_str(), flags, 0600);
  if (descriptor < 0) return cannot_open;
  if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
  ::close(descriptor);
  return is_taken;
}

bool RecoverySlot::is_held(unsigned number) const {
  const int descriptor = lock(number, 0);
  if (descriptor >= 0) ::close(descriptor);
  return descriptor == is_taken;
}

std::vector<unsigned> RecoverySlot::free_numbers() const {
  std::vector<unsigned> numbers;
  for (unsigned number = 0; number < slot_count; ++number) {
    if (number == number_ || !is_held(number)) numbers.push_back(number);
  }
  return numbers;
}

}  // namespace zemblar

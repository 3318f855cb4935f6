#pragma once

#include <string>

namespace zemblar {

/// The number by which a process tells its files in a folder from those of other processes that run
/// at the same time.
///
/// A process takes the lowest free number and holds a lock on the file `FOLDER.lock-NUMBER`. The
/// system releases the lock when the process ends, however it ends, so files whose number is not
/// locked were left by a process that has ended. If no lock file can be locked, the number is
/// derived from the process id.
class RecoverySlot {
 public:
  /// Takes a number.
  explicit RecoverySlot(std::string folder);
  ~RecoverySlot();
  RecoverySlot(const RecoverySlot&) = delete;
  RecoverySlot& operator=(const RecoverySlot&) = delete;

  [[nodiscard]] unsigned number() const { return number_; }
  /// True for the own number, and for a number that no running process holds.
  [[nodiscard]] bool is_free(unsigned number) const;

 private:
  /// The descriptor of the locked file, or a reason why there is none. `create` is O_CREAT or 0.
  [[nodiscard]] int lock(unsigned number, int create) const;

  std::string folder_;
  unsigned number_;
  int lock_ = -1;  // descriptor; negative for none
};

}  // namespace zemblar

#pragma once

#include <string>
#include <vector>

namespace zemblar {

/// The number by which a program tells its files in a folder from those of other programs that run
/// at the same time.
///
/// A program takes the lowest free number and holds a lock on the file `FOLDER.lock-NUMBER`. The
/// system drops the lock when the process ends, however it ends: files with a number that is not
/// held were left by a program that is gone.
class RecoverySlot {
 public:
  /// Takes a number. Programs share the number 0 where no lock can be had.
  explicit RecoverySlot(std::string folder);
  ~RecoverySlot();
  RecoverySlot(const RecoverySlot&) = delete;
  RecoverySlot& operator=(const RecoverySlot&) = delete;

  [[nodiscard]] unsigned number() const { return number_; }
  /// The own number, and those that no running program holds.
  [[nodiscard]] std::vector<unsigned> free_numbers() const;

 private:
  /// The descriptor of the locked file, or a reason why there is none. `create` is O_CREAT or 0.
  [[nodiscard]] int lock(unsigned number, int create) const;
  [[nodiscard]] bool is_held(unsigned number) const;

  std::string folder_;
  unsigned number_ = 0;
  int lock_ = -1;  // descriptor; negative for none
};

}  // namespace zemblar

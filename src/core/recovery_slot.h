#pragma once

#include <string>

namespace zemblar {

/// The number by which a program tells its files in a folder from those of other programs that run
/// at the same time.
///
/// A program takes the lowest free number and holds a lock on the file `FOLDER.lock-NUMBER`. The
/// system drops the lock when the process ends, however it ends: files with a number that is not
/// held were left by a program that is gone. Where no lock can be had, the number is made of that
/// of the process.
class RecoverySlot {
 public:
  /// Takes a number.
  explicit RecoverySlot(std::string folder);
  ~RecoverySlot();
  RecoverySlot(const RecoverySlot&) = delete;
  RecoverySlot& operator=(const RecoverySlot&) = delete;

  [[nodiscard]] unsigned number() const { return number_; }
  /// Whether it is the own number, or one that no running program holds.
  [[nodiscard]] bool is_free(unsigned number) const;

 private:
  /// The descriptor of the locked file, or a reason why there is none. `create` is O_CREAT or 0.
  [[nodiscard]] int lock(unsigned number, int create) const;

  std::string folder_;
  unsigned number_;
  int lock_ = -1;  // descriptor; negative for none
};

}  // namespace zemblar

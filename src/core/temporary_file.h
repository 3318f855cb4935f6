#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace zemblar {

/// A file that is written under a temporary name beside `target` and replaces it when complete, so
/// that the target is always the old file or the new one.
///
/// While the file exists, a note in the user's data directory has its path, so that the next start
/// finds what a killed program has left in any folder. A lock on the file shows that its writer
/// still runs.
///
/// All members throw Gio::Error.
class TemporaryFile {
 public:
  /// The process's umask is applied to `mode`.
  TemporaryFile(std::string target, mode_t mode);
  /// Removes the file, unless it has replaced the target.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// False if the owner, the group or the permissions cannot be set.
  [[nodiscard]] bool take_attributes(uid_t owner, gid_t group, mode_t mode);
  void set_mode(mode_t mode);
  void write(std::string_view bytes);
  /// Replaces the target. On return the bytes are on disk and survive a power failure.
  void take_place();

  /// Removes the files of programs that were killed while they wrote.
  static void remove_left_behind();

 private:
  void create(mode_t mode);
  void note();

  std::string target_;
  std::string path_;  // empty when the file has replaced the target
  std::string note_;  // a symbolic link to `path_`; empty if none could be made
  int fd_ = -1;
};

/// Throws the Gio::Error for the value of `errno`.
[[noreturn]] void throw_errno();
/// Writes all bytes at the descriptor's current position. Throws Gio::Error.
void write_fully(int fd, std::string_view bytes);

}  // namespace zemblar

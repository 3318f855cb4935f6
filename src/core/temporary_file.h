#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace zemblar {

/// A file that is written under a name of its own beside `target` and takes its place when it is
/// complete, so that the target is always the old file or the new one.
///
/// A note in the user's data directory names the file while it exists: what a killed program leaves
/// behind is found at the next start, in whatever folder it is. A lock tells that the writer lives.
///
/// All members throw Gio::Error.
class TemporaryFile {
 public:
  /// The process's mask takes bits from `mode`.
  TemporaryFile(std::string target, mode_t mode);
  /// Removes the file, unless it has taken the target's place.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// False if the owner, the group or the permissions cannot be set.
  [[nodiscard]] bool take_attributes(uid_t owner, gid_t group, mode_t mode);
  void set_mode(mode_t mode);
  void write(std::string_view bytes);
  /// Replaces the target. The bytes are on the disk then, also if the power fails.
  void take_place();

  /// Removes the files of programs that were killed while they wrote.
  static void remove_left_behind();

 private:
  void create(mode_t mode);
  void note();

  std::string target_;
  std::string path_;  // empty when the file has taken the target's place
  std::string note_;  // a symbolic link to `path_`; empty if none could be made
  int fd_ = -1;
};

/// Throws the Gio::Error that belongs to `errno`.
[[noreturn]] void throw_errno();
/// Writes everything at the descriptor's place. Throws Gio::Error.
void write_fully(int fd, std::string_view bytes);

}  // namespace zemblar

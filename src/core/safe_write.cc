#include "core/safe_write.h"

#include <fcntl.h>
#include <giomm/error.h>
#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "core/file_bytes.h"
#include "core/i18n.h"
#include "core/temporary_file.h"

namespace zemblar {
namespace {

constexpr mode_t usual_mode = 0666;
constexpr mode_t private_mode = 0600;

/// The path of the file's copy, made from a digest of the full path because files in different
/// folders may have the same name.
std::string copy_path(const std::string& path) {
  return Glib::build_filename(Glib::get_user_data_dir(), "zemblar", "saved-copies",
                              digest_of(path).substr(0, 32) + ".zblt");
}

/// Copies the file to the user's data directory and returns the path of the copy. An existing copy
/// is not overwritten: it is the last good state of a file that has been cut off since.
std::string copy_aside(const std::string& path) {
  const auto copy = copy_path(path);
  if (Glib::file_test(copy, Glib::FILE_TEST_EXISTS)) return copy;
  g_mkdir_with_parents(Glib::path_get_dirname(copy).c_str(), 0700);
  const auto old = read_regular_file(path, largest_layout + 1);
  if (!old || old->bytes.size() > largest_layout) {
    throw Gio::Error(Gio::Error::FAILED, _("what is there cannot be copied"));
  }
  TemporaryFile file(copy, private_mode);
  file.write(old->bytes);
  file.take_place();
  return copy;
}

/// A file that is open for writing in place.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path) : fd_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
    if (fd_ < 0) throw_errno();
  }
  ~OpenFile() { ::close(fd_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// Allocates the disk space for the new bytes while the old ones still exist. If the file system
  /// does not support this, the C library reads and rewrites the file instead.
  void reserve(off_t old_size, std::size_t size) {
    errno = ::posix_fallocate(fd_, 0, static_cast<off_t>(size));
    if (errno == 0 || errno == EOPNOTSUPP || errno == EINVAL) return;
    const int problem = errno;
    [[maybe_unused]] const int result = ::ftruncate(fd_, old_size);
    errno = problem;
    throw_errno();
  }
  void overwrite(const std::string& bytes) {
    write_fully(fd_, bytes);
    if (::ftruncate(fd_, static_cast<off_t>(bytes.size())) != 0 || ::fsync(fd_) != 0) throw_errno();
  }

 private:
  int fd_;
};

/// One call of `write_safely`, and where the old bytes are if it fails.
class SafeWrite {
 public:
  explicit SafeWrite(const std::string& path) : path_(target_of(path)) {
    exists_ = ::stat(path_.c_str(), &old_) == 0;
  }

  void write(const std::string& bytes, std::optional<mode_t> mode) {
    refuse_unsuitable();
    if (!replace(bytes, mode)) write_in_place(bytes);
  }

  void refuse_unsuitable() const {
    if (!exists_) return;
    if (!S_ISREG(old_.st_mode)) {
      throw Gio::Error(Gio::Error::NOT_REGULAR_FILE, _("it is a folder or a device"));
    }
    if (::faccessat(AT_FDCWD, path_.c_str(), W_OK, AT_EACCESS) != 0) throw_errno();
  }

  /// What the user is told after a failure.
  [[nodiscard]] Glib::ustring remains() const {
    if (!exists_) return _("Nothing has been written.");
    const auto copy = copy_of_overwritten(path_);
    if (copy.empty()) return _("The file is as it was before.");
    return Glib::ustring::compose(_("The file as it was before is kept as %1."),
                                  Glib::filename_display_name(copy));
  }

 private:
  /// A temporary file with the attributes of the old one, or null if the old one must stay.
  [[nodiscard]] std::unique_ptr<TemporaryFile> temporary(std::optional<mode_t> mode) const {
    if (!exists_) {
      auto file = std::make_unique<TemporaryFile>(path_, mode.value_or(usual_mode));
      if (mode) file->set_mode(*mode);
      return file;
    }
    if (old_.st_nlink > 1) return nullptr;
    try {
      auto file = std::make_unique<TemporaryFile>(path_, private_mode);
      const auto wanted = mode.value_or(old_.st_mode);
      if (file->take_attributes(old_.st_uid, old_.st_gid, wanted)) return file;
    } catch (const Gio::Error&) {
      // No file can be created in the folder.
    }
    return nullptr;
  }

  bool replace(const std::string& bytes, std::optional<mode_t> mode) const {
    const auto file = temporary(mode);
    if (!file) return false;
    file->write(bytes);
    file->take_place();
    return true;
  }

  void write_in_place(const std::string& bytes) {
    OpenFile file(path_);
    const bool is_damaged = !copy_of_overwritten(path_).empty();
    const auto copy = copy_aside(path_);
    try {
      file.reserve(old_.st_size, bytes.size());
    } catch (const Gio::Error&) {
      if (!is_damaged) g_unlink(copy.c_str());
      throw;
    }
    file.overwrite(bytes);
    g_unlink(copy.c_str());
  }

  std::string path_;
  struct stat old_ {};
  bool exists_ = false;
};

}  // namespace

std::string target_of(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? resolved.get() : path;
}

std::string copy_of_overwritten(const std::string& path) {
  auto copy = copy_path(target_of(path));
  return Glib::file_test(copy, Glib::FILE_TEST_EXISTS) ? copy : std::string();
}

void remove_copy_of_overwritten(const std::string& path) {
  g_unlink(copy_path(target_of(path)).c_str());
}

namespace {

/// Runs one step of a save; a failure gets the text that the user is told.
template <typename Step>
void save_step(const Glib::RefPtr<Gio::File>& file, Step step) {
  SafeWrite safe(file->get_path());
  try {
    step(safe);
  } catch (const Gio::Error& error) {
    throw Gio::Error(error.code(),
                     Glib::ustring::compose(_("Couldn't save %1: %2. %3"), file->get_parse_name(),
                                            error.what(), safe.remains()));
  }
}

}  // namespace

void write_safely(const Glib::RefPtr<Gio::File>& file, const std::string& bytes,
                  std::optional<mode_t> mode) {
  save_step(file, [&](SafeWrite& safe) { safe.write(bytes, mode); });
}

void require_writable(const Glib::RefPtr<Gio::File>& file) {
  save_step(file, [](SafeWrite& safe) { safe.refuse_unsuitable(); });
}

}  // namespace zemblar

#include "core/temporary_file.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <giomm/error.h>
#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ios>
#include <memory>
#include <utility>
#include <vector>

namespace zemblar {
namespace {

constexpr std::string_view prefix = ".zemblar-";

std::string notes_folder() {
  return Glib::build_filename(Glib::get_user_data_dir(), "zemblar", "writing");
}

std::string random_digits() {
  return Glib::ustring::format(std::hex, g_random_int()).raw();
}

std::vector<std::string> notes() try {
  Glib::Dir folder(notes_folder());
  return {folder.begin(), folder.end()};
} catch (const Glib::FileError&) {
  return {};  // the folder does not exist yet
}

/// The path in the note; empty for a symbolic link that this class has not made.
std::string noted_file(const std::string& note) {
  const std::unique_ptr<char, decltype(&g_free)> file(g_file_read_link(note.c_str(), nullptr),
                                                      g_free);
  if (!file || !Glib::path_get_basename(file.get()).starts_with(prefix)) return {};
  return file.get();
}

/// True if a running program is writing the file.
bool is_being_written(const std::string& file) {
  const int fd = ::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  const bool locked = ::flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  ::close(fd);
  return locked;
}

/// Flushes the folder's directory entries to disk.
void sync_folder(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

void throw_errno() {
  const int number = errno;
  throw Gio::Error(static_cast<Gio::Error::Code>(g_io_error_from_errno(number)),
                   g_strerror(number));
}

void write_fully(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw_errno();
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

TemporaryFile::TemporaryFile(std::string target, mode_t mode) : target_(std::move(target)) {
  create(mode);
  ::flock(fd_, LOCK_EX | LOCK_NB);
}

TemporaryFile::~TemporaryFile() {
  if (fd_ >= 0) ::close(fd_);
  if (!path_.empty()) g_unlink(path_.c_str());
  if (!note_.empty()) g_unlink(note_.c_str());
}

// Makes the note before the file: a program that is killed in between leaves only a note.
void TemporaryFile::create(mode_t mode) {
  const auto folder = Glib::path_get_dirname(target_);
  for (;;) {
    path_ = Glib::build_filename(folder, std::string(prefix) + random_digits());
    note();
    fd_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (fd_ >= 0) return;
    const int problem = errno;
    if (!note_.empty()) g_unlink(note_.c_str());
    errno = problem;
    if (problem != EEXIST) throw_errno();
  }
}

void TemporaryFile::note() {
  g_mkdir_with_parents(notes_folder().c_str(), 0700);
  note_ = Glib::build_filename(notes_folder(), random_digits());
  if (::symlink(path_.c_str(), note_.c_str()) != 0) note_.clear();
}

bool TemporaryFile::take_attributes(uid_t owner, gid_t group, mode_t mode) {
  return ::fchown(fd_, owner, group) == 0 && ::fchmod(fd_, mode & 07777) == 0;
}

void TemporaryFile::set_mode(mode_t mode) {
  if (::fchmod(fd_, mode & 07777) != 0) throw_errno();
}

void TemporaryFile::write(std::string_view bytes) {
  write_fully(fd_, bytes);
}

void TemporaryFile::take_place() {
  if (::fsync(fd_) != 0) throw_errno();
  if (g_rename(path_.c_str(), target_.c_str()) != 0) throw_errno();
  path_.clear();
  sync_folder(Glib::path_get_dirname(target_));
}

void TemporaryFile::remove_left_behind() {
  for (const auto& name : notes()) {
    const auto note = Glib::build_filename(notes_folder(), name);
    const auto file = noted_file(note);
    if (file.empty() || is_being_written(file)) continue;
    g_unlink(file.c_str());
    g_unlink(note.c_str());
  }
}

}  // namespace zemblar

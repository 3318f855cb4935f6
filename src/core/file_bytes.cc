#include "core/file_bytes.h"

#include <fcntl.h>
#include <glib/gstdio.h>
#include <glibmm/checksum.h>
#include <glibmm/fileutils.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zemblar {
namespace {

/// Fills the string, or less of it when the file is shorter. False if a read fails.
bool fill(int fd, std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const auto count = ::read(fd, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return true;
}

}  // namespace

std::optional<FileBytes> read_regular_file(const std::string& path, std::size_t limit) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::optional<FileBytes> file;
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
    file.emplace();
    file->file_size = static_cast<std::size_t>(info.st_size);
    file->bytes.resize(std::min(file->file_size, limit));
    if (!fill(fd, file->bytes)) file.reset();
  }
  ::close(fd);
  return file;
}

std::string mark_damaged(const std::string& path) {
  auto aside = path + ".damaged";
  while (Glib::file_test(aside, Glib::FILE_TEST_EXISTS)) aside += ".damaged";
  return g_rename(path.c_str(), aside.c_str()) == 0 ? aside : std::string();
}

std::string digest_of(const std::string& bytes) {
  return Glib::Checksum::compute_checksum(Glib::Checksum::CHECKSUM_SHA256, bytes);
}

}  // namespace zemblar

#include "devices/port/port_user.h"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <fstream>

namespace zemblar {
namespace {

namespace fs = std::filesystem;

/// The process id of an entry of /proc; 0 if it is no process.
int process_of(const fs::path& entry) {
  const auto name = entry.filename().string();
  int number = 0;
  const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
  return read.ptr == name.data() + name.size() ? number : 0;
}

/// The first matching entry of a folder. An entry that vanishes meanwhile, because a process has
/// ended, is no error.
template <typename Fits>
std::optional<fs::path> find_entry(const fs::path& folder, const Fits& fits) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (fits(entry->path())) return entry->path();
  }
  return {};
}

bool has_open(const fs::path& process, const fs::path& file) {
  const auto is_file = [&](const fs::path& descriptor) {
    std::error_code error;
    return fs::read_symlink(descriptor, error) == file;
  };
  return find_entry(process / "fd", is_file).has_value();
}

std::string name_of(const fs::path& process) {
  std::string name;
  std::getline(std::ifstream(process / "comm"), name);
  return name;
}

}  // namespace

std::optional<Program> program_using(const std::string& path) {
  std::error_code error;
  const auto file = fs::canonical(path, error);
  if (error) return {};
  const auto found = find_entry("/proc", [&](const fs::path& entry) {
    const auto process = process_of(entry);
    return process != 0 && process != getpid() && has_open(entry, file);
  });
  if (!found) return {};
  return Program{name_of(*found), process_of(*found)};
}

}  // namespace zemblar

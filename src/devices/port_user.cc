#include "devices/port_user.h"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <fstream>

namespace zemblar {
namespace {

namespace fs = std::filesystem;

/// 0 for an entry of /proc that is no process.
int process_of(const fs::path& entry) {
  const auto name = entry.filename().string();
  int number = 0;
  const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
  return read.ptr == name.data() + name.size() ? number : 0;
}

bool has_open(const fs::path& process, const fs::path& file) {
  std::error_code error;
  for (const auto& descriptor : fs::directory_iterator(process / "fd", error)) {
    if (fs::read_symlink(descriptor, error) == file) return true;
  }
  return false;
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
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    const auto process = process_of(entry.path());
    if (process == 0 || process == getpid() || !has_open(entry.path(), file)) continue;
    return Program{name_of(entry.path()), process};
  }
  return {};
}

}  // namespace zemblar

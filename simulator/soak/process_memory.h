#pragma once

#include <malloc.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace zemblar::simulator {

/// A value from the system's status of this process, in kB; 0 if there is none.
inline std::size_t process_memory(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key + ":")) return std::stoul(line.substr(key.size() + 1));
  }
  return 0;
}

/// The growth of the process's memory during `work`, in kB.
template <typename Work>
std::size_t rise_of_memory(const Work& work) {
  ::malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // the highest size so far is that of now
  const auto before = process_memory("VmRSS");
  work();
  const auto highest = process_memory("VmHWM");
  return highest > before ? highest - before : 0;
}

}  // namespace zemblar::simulator

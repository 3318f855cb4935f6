#pragma once

#include <string>

namespace zemblar::simulator {

/// A temporary folder used as the user's home, for layout files and the program's own files. The
/// destructor removes it with its content.
class TemporaryHome {
 public:
  TemporaryHome();
  ~TemporaryHome();
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace zemblar::simulator

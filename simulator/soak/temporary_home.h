#pragma once

#include <string>

namespace zemblar::simulator {

/// An empty folder for files of the operator, and for what the program keeps of its user: the
/// program looks there from then on. Ends with all that is in it.
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

#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace zemblar {

/// Writes files on a thread of its own, so that a slow disk keeps nobody waiting.
///
/// Of several texts that wait for the same file the last one is written. Files of different names
/// come in no particular order. What waits at the end is still written.
class BackgroundWriter {
 public:
  BackgroundWriter() = default;
  ~BackgroundWriter();
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  /// Replaces the file, which its owner alone may read, or leaves it as it was; its folder is made
  /// if need be.
  void write(const std::string& path, std::string bytes);
  void remove(const std::string& path);
  /// Waits until nothing waits.
  void finish();
  /// How the writing since the last call has gone: what went wrong first, or empty for success.
  /// None if nothing has been written.
  [[nodiscard]] std::optional<std::string> take_outcome();

 private:
  using Bytes = std::optional<std::string>;  // none: the file goes

  void put(const std::string& path, Bytes bytes);
  void run();
  static std::string carry_out(const std::string& path, const Bytes& bytes);

  std::mutex mutex_;  // for everything below
  std::condition_variable changed_;
  std::map<std::string, Bytes> waiting_;
  bool busy_ = false;
  bool ending_ = false;
  std::optional<std::string> outcome_;
  std::thread thread_;
};

}  // namespace zemblar

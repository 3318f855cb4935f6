#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace zemblar {

/// Writes files on a thread of its own, so that a slow disk does not block the main loop.
///
/// When several texts wait for the same file, only the last is written. The order among different
/// files is undefined. The destructor waits until everything is written.
class BackgroundWriter {
 public:
  BackgroundWriter() = default;
  ~BackgroundWriter();
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  /// Replaces the whole file, readable for its owner alone; after a failure the old file remains.
  /// Makes the folder if it is missing.
  void write(const std::string& path, std::string bytes);
  void remove(const std::string& path);
  /// Blocks until everything that waits is written.
  void finish();
  /// The result of all writing since the last call: the first error message, or an empty text for
  /// success. No value if nothing has been written.
  [[nodiscard]] std::optional<std::string> take_outcome();

 private:
  using Bytes = std::optional<std::string>;  // no value: remove the file

  void enqueue(const std::string& path, Bytes bytes);
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

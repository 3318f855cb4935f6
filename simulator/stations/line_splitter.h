#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::simulator {

/// Cuts a byte stream into lines, however the bytes were split on their way.
///
/// A line ends with a line feed; a carriage return before it is dropped. The splitter holds at
/// most `limit` bytes of an unfinished line: beyond that it is `overflowed()` for good and gives
/// no more lines, so that a peer that never sends a line feed cannot eat the memory.
class LineSplitter {
 public:
  explicit LineSplitter(std::size_t limit = 4096) : limit_(limit) {}

  /// Takes the next bytes of the stream; returns the lines that they complete, without line ends.
  [[nodiscard]] std::vector<std::string> feed(std::string_view bytes);

  [[nodiscard]] bool overflowed() const { return overflowed_; }

 private:
  std::size_t limit_;  // bytes
  std::string rest_;
  bool overflowed_ = false;
};

}  // namespace zemblar::simulator

#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::simulator {

/// One line of the conversation, or a note about it.
struct EcosLogEntry {
  enum class Kind { received, sent, note };

  std::chrono::system_clock::time_point time;
  unsigned client = 0;  ///< 0 for a note about the station itself
  Kind kind = Kind::note;
  std::string text;  ///< without the line end
};

/// "12:00:01.234 #1 <- request(1000,control,force)" in local time; "<-" is what the station
/// received, "->" what it sent, "**" a note. Bytes that are not printable are shown as "?".
[[nodiscard]] std::string format(const EcosLogEntry& entry);

/// The newest lines of the conversation. A listener gets each new line.
class EcosLog {
 public:
  using Kind = EcosLogEntry::Kind;

  /// Keeps the newest `limit` entries.
  explicit EcosLog(std::size_t limit = 100'000) : limit_(limit) {}

  /// Enters each line of `text`.
  void add(unsigned client, Kind kind, std::string_view text);

  /// The listener is called after each new entry. It may remove itself, and must not throw.
  void on_entry(std::function<void(const EcosLogEntry&)> listener) {
    listener_ = std::move(listener);
  }

  [[nodiscard]] std::vector<EcosLogEntry> entries() const {
    return {entries_.begin(), entries_.end()};
  }
  /// The command lines received, of all clients, oldest first.
  [[nodiscard]] std::vector<std::string> commands() const;

  void clear() { entries_.clear(); }

 private:
  void add_line(unsigned client, Kind kind, std::string_view line);

  std::size_t limit_;
  std::deque<EcosLogEntry> entries_;
  std::function<void(const EcosLogEntry&)> listener_;
};

}  // namespace zemblar::simulator

#include "simulator/stations/ecos_log.h"

#include <algorithm>
#include <ctime>

#include "simulator/stations/ecos_protocol.h"

namespace zemblar::simulator {
namespace {

std::string padded(long value, std::size_t width) {
  const auto digits = decimal(static_cast<unsigned>(value));
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::string time_of_day(std::chrono::system_clock::time_point time) {
  using namespace std::chrono;
  const auto whole = floor<seconds>(time);
  const auto seconds_since_epoch = system_clock::to_time_t(whole);
  std::tm local{};
  localtime_r(&seconds_since_epoch, &local);
  return padded(local.tm_hour, 2) + ":" + padded(local.tm_min, 2) + ":" + padded(local.tm_sec, 2) +
         "." + padded(duration_cast<milliseconds>(time - whole).count(), 3);
}

std::string_view arrow(EcosLogEntry::Kind kind) {
  switch (kind) {
    case EcosLogEntry::Kind::received:
      return " <- ";
    case EcosLogEntry::Kind::sent:
      return " -> ";
    case EcosLogEntry::Kind::note:
      return " ** ";
  }
  return " ";
}

bool is_unprintable(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

std::string format(const EcosLogEntry& entry) {
  auto line = time_of_day(entry.time);
  if (entry.client != 0) line += " #" + decimal(entry.client);
  line += arrow(entry.kind);
  auto text = entry.text;
  std::ranges::replace_if(text, is_unprintable, '?');
  return line + text;
}

void EcosLog::add(unsigned client, Kind kind, std::string_view text) {
  while (!text.empty()) {
    const auto end = text.find('\n');
    auto line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    add_line(client, kind, line);
  }
}

void EcosLog::add_line(unsigned client, Kind kind, std::string_view line) {
  EcosLogEntry entry{std::chrono::system_clock::now(), client, kind, std::string(line)};
  if (entries_.size() >= limit_ && !entries_.empty()) entries_.pop_front();
  entries_.push_back(entry);
  const auto listener = listener_;
  if (listener) listener(entry);
}

std::vector<std::string> EcosLog::commands() const {
  std::vector<std::string> lines;
  for (const auto& entry : entries_) {
    if (entry.kind == Kind::received) lines.push_back(entry.text);
  }
  return lines;
}

}  // namespace zemblar::simulator

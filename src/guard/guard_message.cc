#include "guard/guard_message.h"

#include <charconv>
#include <sstream>
#include <vector>

namespace zemblar::guard {
namespace {

constexpr std::string_view digits = "0123456789abcdef";

/// Encodes any bytes as one word without line breaks.
std::string to_hex(const std::string& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 0xf];
  }
  return text;
}

std::string from_hex(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
    const auto high = digits.find(text[at]);
    const auto low = digits.find(text[at + 1]);
    if (high == digits.npos || low == digits.npos) return {};
    bytes += static_cast<char>(high << 4 | low);
  }
  return bytes;
}

std::string text_of(const Station& station) {
  const auto& order = station.order;
  return "station\n" + station.key + '\n' + to_hex(station.name) + '\n' + order.host + '\n' +
         std::to_string(order.port) + '\n' + to_hex(order.bytes) + '\n' +
         to_hex(order.confirmation) + '\n';
}

std::string text_of(const Gone& gone) {
  return "gone\n" + gone.key + '\n';
}

std::string text_of(const Alive& alive) {
  return alive.driving ? "alive\ndriving\n" : "alive\nstanding\n";
}

std::string text_of(const Leave& /*leave*/) {
  return "leave\n";
}

std::vector<std::string> lines_of(const std::string& datagram) {
  std::vector<std::string> lines;
  std::istringstream text(datagram);
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

std::optional<Message> read_station(const std::vector<std::string>& lines) {
  Station station{.key = lines[1], .name = from_hex(lines[2]), .order = {.host = lines[3]}};
  const auto& port = lines[4];
  std::from_chars(port.data(), port.data() + port.size(), station.order.port);
  station.order.bytes = from_hex(lines[5]);
  station.order.confirmation = from_hex(lines[6]);
  return station;
}

}  // namespace

std::string encode(const Message& message) {
  return std::visit([](const auto& kind) { return text_of(kind); }, message);
}

std::optional<Message> decode(const std::string& datagram) {
  const auto lines = lines_of(datagram);
  if (lines.size() == 7 && lines[0] == "station") return read_station(lines);
  if (lines.size() == 2 && lines[0] == "gone") return Gone{lines[1]};
  if (lines.size() == 2 && lines[0] == "alive") return Alive{lines[1] == "driving"};
  if (lines.size() == 1 && lines[0] == "leave") return Leave{};
  return std::nullopt;
}

}  // namespace zemblar::guard

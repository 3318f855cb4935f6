#include "simulator/soak/damage.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

namespace zemblar::simulator {
namespace {

using Lines = std::vector<std::string>;

constexpr std::array odd_values = {"",
                                   "~",
                                   "0",
                                   "-1",
                                   "1e308",
                                   "-1e300",
                                   ".nan",
                                   ".inf",
                                   "99999999999999999999",
                                   "'7'",
                                   "[]",
                                   "{}",
                                   "[0]",
                                   "[~, ~]",
                                   "true",
                                   "\"\\r\\x85\"",
                                   "*x",
                                   "!lok {}",
                                   "!!int 3",
                                   "2147483648",
                                   "65536",
                                   "[1e308, -1e308]",
                                   "&x []",
                                   "\"\\u0000\"",
                                   "{~: ~}",
                                   "1.5e-310"};
constexpr std::array odd_tags = {
    "!lok",    "!view",      "!zone",   "!view-zone", "!device/Tessara/BUS",
    "!script", "!lok-group", "!signal", "!x",         "!long"};

Lines lines_of(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string text_of(const Lines& lines) {
  std::string text;
  for (const auto& line : lines) text += line + '\n';
  return text;
}

class Accident {
 public:
  explicit Accident(Chance& chance) : chance_(chance) {}

  void damage_bytes(std::string& text) {
    if (text.empty()) return;
    const auto place = chance_.below(text.size());
    switch (chance_.below(5)) {
      case 0:
        text[place] = static_cast<char>(chance_.below(256));
        return;
      case 1:
        text.erase(place, chance_.below(40));
        return;
      case 2:
        text.insert(place, text.substr(chance_.below(text.size()), chance_.below(200)));
        return;
      case 3:
        text.insert(place, 1, "[]{}:#&*!|>'\"%@`,?-\n\t\r"[chance_.below(23)]);
        return;
      default:
        if (chance_.happens(0.2)) text.resize(place);
    }
  }

  void damage_lines(Lines& lines) {
    if (lines.empty()) return;
    const auto place = chance_.below(lines.size());
    const auto at = lines.begin() + static_cast<std::ptrdiff_t>(place);
    switch (chance_.below(6)) {
      case 0:
        lines.erase(at);
        return;
      case 1:
        std::swap(lines[place], lines[chance_.below(lines.size())]);
        return;
      case 2:
        return repeat_piece(lines, place);
      case 3:
        return replace_tag(lines[place]);
      case 4:
        return name_again(lines, place);
      default:
        return replace_value(lines[place]);
    }
  }

  /// Lists that name each other, doubling at each step, in the place of a value.
  void unfold(Lines& lines) {
    std::string piece =
        "x0: &x0 " + std::string(odd_values[chance_.below(odd_values.size())]) + '\n';
    const auto steps = 1 + chance_.below(25);
    for (std::size_t i = 1; i <= steps; ++i) {
      const auto inner = "*x" + std::to_string(i - 1);
      const auto name = std::to_string(i);
      piece += "x" + name + ": &x" + name + " ";
      piece += chance_.happens(0.5) ? "[" + inner + ", " + inner + "]\n"
                                    : "!device/Tessara/BUS {devices: [" + inner + "]}\n";
    }
    lines.insert(lines.begin() + std::min<std::ptrdiff_t>(1, std::ssize(lines)), piece);
    auto& line = lines[chance_.below(lines.size())];
    if (const auto colon = line.find(": "); colon != std::string::npos) {
      line = line.substr(0, colon + 2) + "[*x" + std::to_string(steps) + "]";
    }
  }

 private:
  void repeat_piece(Lines& lines, std::size_t from) {
    const auto count = std::min(1 + chance_.below(30), lines.size() - from);
    const Lines piece(lines.begin() + static_cast<std::ptrdiff_t>(from),
                      lines.begin() + static_cast<std::ptrdiff_t>(from + count));
    const auto place = static_cast<std::ptrdiff_t>(chance_.below(lines.size()));
    lines.insert(lines.begin() + place, piece.begin(), piece.end());
  }

  void replace_tag(std::string& line) {
    const auto mark = line.find('!');
    if (mark == std::string::npos) return replace_value(line);
    line = line.substr(0, mark) + odd_tags[chance_.below(odd_tags.size())];
  }

  void replace_value(std::string& line) {
    const auto colon = line.find(": ");
    if (colon == std::string::npos) return;
    std::string value = odd_values[chance_.below(odd_values.size())];
    if (chance_.happens(0.05)) value = std::string(chance_.below(600), '[') + "a";
    line = line.substr(0, colon + 2) + value;
  }

  /// An anchor, and aliases of it behind, or within it.
  void name_again(Lines& lines, std::size_t place) {
    const auto dash = lines[place].find("- ");
    if (dash == std::string::npos) return;
    const auto name = "a" + std::to_string(place);
    lines[place].insert(dash + 2, "&" + name + " ");
    for (auto count = 1 + chance_.below(20); count > 0; --count) {
      const auto after = place + 1 + chance_.below(lines.size() - place);
      const auto other = lines[std::min(after, lines.size() - 1)].find("- ");
      if (other == std::string::npos) continue;
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(after),
                   std::string(other, ' ') + "- *" + name);
    }
  }

  Chance& chance_;
};

}  // namespace

std::string damaged(std::string text, Chance& chance) {
  Accident accident(chance);
  auto lines = lines_of(text);
  if (chance.happens(0.1)) accident.unfold(lines);
  const auto edits = chance.below(3);
  for (std::size_t i = 0; i < edits; ++i) accident.damage_lines(lines);
  text = text_of(lines);
  const auto bytes = chance.happens(0.1) || edits == 0 ? 1 + chance.below(3) : 0;
  for (std::size_t i = 0; i < bytes; ++i) accident.damage_bytes(text);
  return text;
}

}  // namespace zemblar::simulator

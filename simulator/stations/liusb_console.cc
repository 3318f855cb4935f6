#include "simulator/stations/liusb_console.h"

#include <charconv>
#include <stdexcept>

namespace zemblar::simulator {
namespace {

constexpr auto help =
    R"(deaf HEX       never answer requests that begin with these bytes, as e4 20 00 03
mute           do as told and say nothing
silent         hear nothing and say nothing
late MS        wait before each answer
well           behave well again)";

/// Up to four bytes, blanks left out.
std::uint32_t bytes_of(std::string_view text) {
  std::string digits(text);
  std::erase(digits, ' ');
  std::uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  const bool whole = error == std::errc() && end == digits.data() + digits.size();
  if (!whole || digits.size() % 2 != 0) {
    throw std::invalid_argument("up to four bytes in hexadecimal digits expected");
  }
  return number;
}

std::chrono::milliseconds time_of(std::string_view text) {
  unsigned ms = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), ms);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::invalid_argument("milliseconds expected");
  }
  return std::chrono::milliseconds(ms);
}

}  // namespace

std::string run_liusb_command(LiUsbInterface& liusb, std::string_view line) {
  const auto blank = std::min(line.find(' '), line.size());
  const auto name = line.substr(0, blank);
  const auto rest = line.substr(std::min(blank + 1, line.size()));
  auto& faults = liusb.faults;
  if (name == "help") return help;
  if (name == "deaf") {
    faults.deaf_to.push_back(bytes_of(rest));
  } else if (name == "mute") {
    faults.mute = true;
  } else if (name == "silent") {
    faults.silent = true;
  } else if (name == "late") {
    faults.late = time_of(rest);
  } else if (name == "well") {
    faults = {};
  } else {
    throw std::invalid_argument("no such command: liusb " + std::string(name) +
                                " (try liusb help)");
  }
  return "";
}

}  // namespace zemblar::simulator

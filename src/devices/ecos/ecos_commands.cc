#include "devices/ecos/ecos_commands.h"

#include <array>
#include <charconv>

#include "devices/decoder_update.h"

namespace zemblar::ecos {
namespace {

std::string decimal(unsigned number) {
  std::array<char, 16> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

std::string command(const char* verb, unsigned object, const std::string& arguments) {
  return std::string(verb) + '(' + decimal(object) + ',' + arguments + ')';
}

}  // namespace

std::string request_view(unsigned object) {
  return command("request", object, "view");
}

std::string get_status() {
  return command("get", station, "status");
}

std::string go() {
  return command("set", station, "go");
}

std::string stop() {
  return command("set", station, "stop");
}

std::string query_locomotives() {
  return command("queryObjects", locomotive_manager, "addr");
}

std::string create_locomotive(Address address, std::string_view name) {
  const auto number = decimal(address.get_addr());
  return command("create", locomotive_manager,
                 "addr[" + number + "],name[" + quoted(name) + "],append");
}

std::string request_control(unsigned locomotive) {
  return command("request", locomotive, "control,force");
}

std::string release_control(unsigned locomotive) {
  return command("release", locomotive, "control");
}

std::string set_speed(unsigned locomotive, unsigned speed) {
  if (speed == DecoderUpdate::emergency_stop) return command("set", locomotive, "stop");
  return command("set", locomotive, "speed[" + decimal(speed) + "]");
}

// The station counts forwards as 0.
std::string set_direction(unsigned locomotive, Direction direction) {
  return command("set", locomotive, direction == Direction::Reverse ? "dir[1]" : "dir[0]");
}

std::string set_function(unsigned locomotive, unsigned fn, bool on) {
  return command("set", locomotive, "func[" + decimal(fn) + (on ? ",1]" : ",0]"));
}

std::string switch_output(unsigned address, unsigned output, bool on) {
  const auto number = decimal((address - 1) * 4 + output);
  return command("set", switching_manager, "switch[DCC" + number + (on ? "g]" : "r]"));
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const auto c : text) {
    if (c == '"') result += c;
    result += c;
  }
  return result + '"';
}

}  // namespace zemblar::ecos

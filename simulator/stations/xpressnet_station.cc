#include "simulator/stations/xpressnet_station.h"

#include "simulator/stations/hex.h"

namespace zemblar::simulator {
namespace {

using Message = XpressNetStation::Message;

const Message done = {0x01, 0x04};
const Message not_understood = {0x61, 0x82};

struct Format {
  unsigned id;
  unsigned steps;
};
constexpr Format formats[] = {{0x10, 14}, {0x11, 27}, {0x12, 28}, {0x13, 128}};

/// Where functions stand in the data byte of a group: the function for each bit from 0 on.
struct Group {
  unsigned id;
  std::vector<unsigned> bits;
};
const Group groups[] = {{0x20, {1, 2, 3, 4, 0}},
                        {0x21, {5, 6, 7, 8}},
                        {0x22, {9, 10, 11, 12}},
                        {0x23, {13, 14, 15, 16, 17, 18, 19, 20}},
                        {0x28, {21, 22, 23, 24, 25, 26, 27, 28}}};

/// Codes 0 and 1 are stop and emergency stop; where bit 4 is the lowest of the step, so are those
/// with it.
unsigned step_of(unsigned steps, std::uint8_t data) {
  if (steps == 128) return (data & 0x7fu) > 1 ? (data & 0x7fu) - 1 : 0;
  if (steps == 14) return (data & 0x0fu) > 1 ? (data & 0x0fu) - 1 : 0;
  const auto code = (data & 0x0fu) * 2 + (data >> 4 & 1u);
  return code > 3 ? code - 3 : 0;
}

}  // namespace

XpressNetStation::Reaction XpressNetStation::execute(const Message& request) {
  if (request.empty() || request.size() != (request[0] & 15u) + 1) return {not_understood};
  if (request[0] == 0xe4 || request[0] == 0x52) {
    return {operate(request) ? done : not_understood};
  }
  return execute_simple(request);
}

XpressNetStation::Reaction XpressNetStation::execute_simple(const Message& request) {
  // The interface answers for itself: its version and the code of its kind.
  if (request == Message{0xf0}) return {{0x02, 0x30, 0x01}};
  if (request == Message{0x21, 0x24}) return {status()};
  if (request == Message{0x21, 0x81} || request == Message{0x21, 0x80}) {
    power = request[1] == 0x81;
    return {done, Message{0x61, static_cast<std::uint8_t>(power ? 0x01 : 0x00)}};
  }
  if (request.size() == 3 && request[0] == 0x22 && request[1] == 0x22) {
    automatic_start = (request[2] & 0x04) != 0;
    return {done};
  }
  return {not_understood};
}

XpressNetStation::Message XpressNetStation::status() const {
  unsigned bits = power ? 0 : 0x02;
  if (automatic_start) bits |= 0x04;
  if (service_mode) bits |= 0x08;
  if (cold_start) bits |= 0x40;
  return {0x62, 0x22, static_cast<std::uint8_t>(bits)};
}

bool XpressNetStation::operate(const Message& request) {
  if (request[0] == 0x52) return switch_coil(request[1], request[2]);
  const auto number = request[2] * 256u + request[3];
  const bool is_long = number >= 0xc000;
  const auto address = is_long ? number - 0xc000 : number;
  if (is_long ? address < 100 || address > 9999 : address < 1 || address > 99) return false;
  return request[1] < 0x20 ? drive(request[1], address, request[4])
                           : set_functions(request[1], address, request[4]);
}

bool XpressNetStation::drive(unsigned format, unsigned address, std::uint8_t data) {
  for (const auto& [id, steps] : formats) {
    if (id != format) continue;
    auto& locomotive = locomotives_[address];
    locomotive.steps = steps;
    locomotive.step = step_of(steps, data);
    locomotive.forwards = (data & 0x80) != 0;
    locomotive.emergency = (data & 0x7f) == 1;
    return true;
  }
  return false;
}

bool XpressNetStation::set_functions(unsigned group, unsigned address, std::uint8_t data) {
  for (const auto& [id, bits] : groups) {
    if (id != group) continue;
    auto& functions = locomotives_[address].functions;
    for (std::size_t bit = 0; bit < bits.size(); ++bit) functions[bits[bit]] = data >> bit & 1;
    return true;
  }
  return false;
}

bool XpressNetStation::switch_coil(std::uint8_t decoder, std::uint8_t data) {
  if ((data & 0xf0) != 0x80) return false;
  coils_[{decoder + 1u, (data & 7u) + 1}] = (data & 8) == 0;
  return true;
}

const XpressNetStation::Locomotive* XpressNetStation::locomotive(unsigned address) const {
  const auto found = locomotives_.find(address);
  return found == locomotives_.end() ? nullptr : &found->second;
}

std::optional<bool> XpressNetStation::coil(unsigned decoder, unsigned output) const {
  const auto found = coils_.find({decoder, output});
  if (found == coils_.end()) return {};
  return found->second;
}

std::string hex(const Message& message) {
  return simulator::hex(std::string(message.begin(), message.end()));
}

}  // namespace zemblar::simulator

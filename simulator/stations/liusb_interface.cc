#include "simulator/stations/liusb_interface.h"

#include <algorithm>

namespace zemblar::simulator {
namespace {

using Message = XpressNetStation::Message;

std::uint8_t check_byte(const Message& message) {
  std::uint8_t check = 0;
  for (const auto byte : message) check ^= byte;
  return check;
}

std::string framed(char mark, const Message& message) {
  std::string bytes = {'\xff', mark};
  bytes.append(message.begin(), message.end());
  return bytes += static_cast<char>(check_byte(message));
}

/// Whether the request begins with the bytes of one of the numbers.
bool is_one_of(const Message& request, const std::vector<std::uint32_t>& numbers) {
  return std::ranges::any_of(numbers, [&](std::uint32_t number) {
    std::uint32_t begin = 0;
    return std::ranges::any_of(request, [&](std::uint8_t byte) {
      begin = begin << 8 | byte;
      return begin == number;
    });
  });
}

const Message not_understood = {0x61, 0x82};
constexpr char to_all = '\xfd';
constexpr char to_asker = '\xfe';

}  // namespace

void LiUsbInterface::receive(std::string_view bytes) {
  if (faults.silent) return;
  received_ += bytes;
  while (take_request()) {
  }
}

/// False when what has come is not yet a request.
bool LiUsbInterface::take_request() {
  if (received_.size() < 3) return false;
  const auto length = (static_cast<unsigned char>(received_[2]) & 15u) + 1;
  if (received_.starts_with("\xff\xfe") && received_.size() < length + 3) return false;
  const Message request(received_.begin() + 2,
                        received_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(
                                                length + 2, received_.size())));
  const bool whole = received_.starts_with("\xff\xfe") &&
                     static_cast<std::uint8_t>(received_[length + 2]) == check_byte(request);
  if (!whole) {
    requests_.push_back("? " + hex({static_cast<std::uint8_t>(received_[0])}));
    received_.erase(0, 1);
    return true;
  }
  received_.erase(0, length + 3);
  execute(request);
  return true;
}

void LiUsbInterface::execute(const Message& request) {
  requests_.push_back(hex(request));
  if (is_one_of(request, faults.deaf_to)) return;
  const auto reaction = react(request);
  if (!faults.mute) answer(reaction);
}

XpressNetStation::Reaction LiUsbInterface::react(const Message& request) {
  if (is_one_of(request, faults.refused)) return {not_understood};
  const auto reaction = station.execute(request);
  if (observer_) observer_(request);
  const auto instead = faults.answers.find(request[0]);
  return instead == faults.answers.end() ? reaction : XpressNetStation::Reaction{instead->second};
}

void LiUsbInterface::answer(const XpressNetStation::Reaction& reaction) {
  auto bytes = framed(to_asker, reaction.answer);
  if (faults.lost_byte < bytes.size()) bytes.erase(faults.lost_byte, 1);
  if (faults.broadcasts) bytes = framed(to_all, {0x61, 0x01}) + bytes;
  bytes = faults.garbage + bytes;
  if (reaction.broadcast) bytes += framed(to_all, *reaction.broadcast);
  if (!faults.pieces) return emit_after(faults.late, bytes);
  auto time = faults.late;
  for (const auto byte : bytes) {
    emit_after(time++, {byte});
  }
}

void LiUsbInterface::lose_power() {
  life_ = std::make_shared<char>();
  received_.clear();
}

void LiUsbInterface::emit_after(Milliseconds time, const std::string& bytes) {
  after_(time, [this, bytes, life = std::weak_ptr(life_)] {
    if (!life.expired()) emit(bytes);
  });
}

void LiUsbInterface::broadcast(const Message& message) {
  emit(framed(to_all, message));
}

void LiUsbInterface::emit(const std::string& bytes) {
  if (!faults.silent) send_(bytes);
}

}  // namespace zemblar::simulator

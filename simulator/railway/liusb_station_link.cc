#include "simulator/railway/liusb_station_link.h"

#include "core/layout.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

const HWDevice record{.hardware_ids = {"usb\\vid_0403&pid_d780"}, .port_name = "ttyUSB0"};

constexpr milliseconds time_out = 750ms;
constexpr milliseconds least_late = 100ms;
constexpr milliseconds most_late = 1000ms;
constexpr milliseconds slow_answer = 100ms;
constexpr std::uint8_t operation = 0xe4;  // of a locomotive
constexpr std::uint8_t first_group = 0x20;

/// The bytes that requests begin with which drive a locomotive with a short address, or set its
/// functions.
std::vector<std::uint32_t> all_of(unsigned address) {
  std::vector<std::uint32_t> requests;
  for (const std::uint32_t kind : {0x10, 0x11, 0x12, 0x13, 0x20, 0x21, 0x22, 0x23, 0x28}) {
    requests.push_back(std::uint32_t{operation} << 24 | kind << 16 | address);
  }
  return requests;
}

/// The functions of a group.
std::pair<unsigned, unsigned> functions_of(std::uint8_t group) {
  if (group == 0x20) return {0, 4};
  if (group == 0x21) return {5, 8};
  if (group == 0x22) return {9, 12};
  return group == 0x23 ? std::pair(13u, 20u) : std::pair(21u, 28u);
}

/// A millisecond of a line at 57600 baud that is never free.
std::string unasked(Chance& chance) {
  if (chance.happens(0.5)) return std::string("\xff\xfd\x42\x05\x48\x0f", 6);
  std::string bytes(6, '\0');
  for (auto& byte : bytes) byte = static_cast<char>(chance.below(256));
  return bytes;
}

}  // namespace

LiUsbStationLink::LiUsbStationLink()
    : hardware_([](auto delay, auto call) { Timeout::once(delay, std::move(call)).release(); },
                [this](std::string_view bytes) { cable_.send(bytes); }),
      device_(Layout::get().get_devices().add(new LIUSB)) {
  cable_.on_bytes([this](std::string_view bytes) { hardware_.receive(bytes); });
  hardware_.on_executed([this](const auto& request) { note(request); });
  plug_in();
}

LiUsbStationLink::~LiUsbStationLink() {
  pull_plug();
}

milliseconds LiUsbStationLink::allowed() const {
  return 1s + time_out;
}

std::optional<DecoderUpdate> LiUsbStationLink::locomotive(unsigned address) const {
  const auto* locomotive = hardware_.station.locomotive(address);
  if (!locomotive) return {};
  DecoderUpdate state{.speed = locomotive->step,
                      .direction = locomotive->forwards ? Direction::Forwards : Direction::Reverse};
  for (const auto& [fn, on] : locomotive->functions) {
    if (on) state.functions |= 1u << fn;
  }
  return state;
}

// --- What arrives ---

void LiUsbStationLink::note(const LiUsbInterface::Message& request) {
  constexpr std::uint8_t power_requests = 0x21;
  constexpr std::uint8_t point = 0x52;
  constexpr std::uint8_t released = 0x08;
  if (request[0] == operation) return report_locomotive(request);
  if (request[0] == power_requests && request[1] != 0x24) {
    report({.kind = Executed::Kind::power, .value = request[1] == 0x81});
  } else if (request[0] == point && (request[2] & released) == 0) {
    report({.kind = Executed::Kind::point, .address = request[1] + 1u});
  }
}

void LiUsbStationLink::report_locomotive(const LiUsbInterface::Message& request) {
  const unsigned address = request[3];
  const auto* locomotive = hardware_.station.locomotive(address);
  if (!locomotive) return;
  auto state = *this->locomotive(address);
  if (locomotive->emergency) state.speed = DecoderUpdate::emergency_stop;
  const auto tell = [&](std::uint32_t item) {
    report({.kind = Executed::Kind::item,
            .address = address,
            .item = item,
            .value = state.value_of(item)});
  };
  if (request[1] < first_group) {
    tell(DecoderUpdate::speed_bit);
    return tell(DecoderUpdate::direction_bit);
  }
  const auto [first, last] = functions_of(request[1]);
  for (auto fn = first; fn <= last; ++fn) tell(DecoderUpdate::function_bit(fn));
}

// --- Faults ---

void LiUsbStationLink::plug_in() {
  port_ = SerialPortLIUSB::create(record, cable_.plug());
  port_->offer();
}

void LiUsbStationLink::pull_plug() {
  if (!port_) return;
  hardware_.lose_power();
  cable_.unplug();
  port_->remove();
  port_.reset();
}

void LiUsbStationLink::apply(LinkFault fault, unsigned victim, Chance& chance) {
  auto& faults = hardware_.faults;
  switch (fault) {
    case LinkFault::refuse_item:
      faults.refused = {0xe4200000 | victim};
      return;
    case LinkFault::refuse_locomotive:
      faults.refused = all_of(victim);
      return;
    case LinkFault::no_answer:
      faults.deaf_to = all_of(victim);
      return;
    case LinkFault::late_answer:
      faults.late = chance.between(least_late, most_late);
      return;
    case LinkFault::drop:
      block_from_now();
      return pull_plug();
    case LinkFault::half_open:
      block_from_now();
      faults.silent = true;
      return;
    case LinkFault::flood:
      flood_ = Timeout::every(1ms, [this, &chance] {
        cable_.send(unasked(chance));
        return true;
      });
      return;
    case LinkFault::slow:
      faults.pieces = true;
      faults.late = slow_answer;
      cable_.write_limit = 1;
  }
}

void LiUsbStationLink::lift(LinkFault fault, bool /*by_hand*/) {
  hardware_.faults = {};
  cable_.write_limit = SerialCable().write_limit;
  flood_.cancel();
  if (fault == LinkFault::drop) plug_in();
}

}  // namespace zemblar::simulator

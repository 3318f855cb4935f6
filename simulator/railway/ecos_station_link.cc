#include "simulator/railway/ecos_station_link.h"

#include "core/layout.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr milliseconds quick_exchange = 2ms;
constexpr milliseconds piece_time = 1ms;
constexpr milliseconds slow_exchange = 110ms;  // some 100 bytes, there and back
constexpr milliseconds least_late = 50ms;
constexpr milliseconds most_late = 200ms;
/// Connecting, the exchanges of a start, looking a locomotive up, and taking control.
constexpr unsigned exchanges_of_start = 6;
constexpr unsigned no_control = 25;
constexpr unsigned refused_function = 2;

/// All that an ECoS tells of locomotives, and what the driver cannot read.
std::string unasked(Chance& chance) {
  static const char* const messages[] = {"<EVENT 1000>\r\n1000 speed[5]\r\n<END 0 (OK)>\r\n",
                                         "<EVENT 1001>\r\n1001 func[2,1]\r\n<END 0 (OK)>\r\n",
                                         "<EVENT 10>\r\n10 size[7]\r\n<END 0 (OK)>\r\n",
                                         "\x01<<>>\r\n<EVENT\r\n"};
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += messages[chance.below(std::size(messages))];
  return bytes;
}

}  // namespace

EcosStationLink::EcosStationLink(unsigned locomotives)
    : device_(Layout::get().get_devices().add(new ECoS(station_.socket()))),
      exchange_(quick_exchange) {
  for (unsigned address = 1; address <= locomotives; ++address) {
    station_.add_locomotive(address, "Locomotive " + decimal(address));
  }
  station_.hub.on_command(
      [this](auto client, const auto& line, auto status) { note(client, line, status); });
}

milliseconds EcosStationLink::allowed() const {
  return 1s + exchanges_of_start * exchange_;
}

std::optional<DecoderUpdate> EcosStationLink::locomotive(unsigned address) const {
  const auto* locomotive = station_.hub.model().locomotive(address);
  if (!locomotive) return {};
  return DecoderUpdate{
      .speed = locomotive->speed,
      .direction = locomotive->direction == 0 ? Direction::Forwards : Direction::Reverse,
      .functions = static_cast<std::uint32_t>(locomotive->functions.to_ulong())};
}

// --- What arrives ---

void EcosStationLink::note(EcosClient client, const std::string& line,
                           std::optional<unsigned> status) {
  if (!status && !unanswered_) {
    unanswered_ = {client, line};
    block_from_now();
  }
  const auto parsed = parse_command(line);
  const auto* command = std::get_if<EcosCommand>(&parsed);
  if (status != 0u || !command || command->verb != "set" || command->options.empty()) return;
  const auto& option = command->options.front();
  if (command->object == EcosModel::station_object) {
    report({.kind = Executed::Kind::power, .value = option.name == "go"});
  } else if (command->object == EcosModel::switching_manager) {
    const auto output = parse_decimal(option.args[0].substr(3, option.args[0].size() - 4));
    report({.kind = Executed::Kind::point, .address = (output.value_or(1) - 1) / 4 + 1});
  } else {
    report_locomotive(station_.hub.model().locomotives().at(command->object).address, option);
  }
}

void EcosStationLink::report_locomotive(unsigned address, const EcosOption& option) {
  const auto number = [&](std::size_t i) { return parse_decimal(option.args.at(i)).value_or(0); };
  Executed executed{.kind = Executed::Kind::item, .address = address};
  if (option.name == "stop" || option.name == "speed") {
    executed.item = DecoderUpdate::speed_bit;
    executed.value = option.name == "stop" ? DecoderUpdate::emergency_stop : number(0);
  } else if (option.name == "dir") {
    executed.item = DecoderUpdate::direction_bit;
    executed.value =
        static_cast<std::uint32_t>(number(0) == 0 ? Direction::Forwards : Direction::Reverse);
  } else {
    executed.item = DecoderUpdate::function_bit(number(0));
    executed.value = number(1);
  }
  report(executed);
}

// --- Faults ---

void EcosStationLink::apply(LinkFault fault, unsigned victim, Chance& chance) {
  auto& faults = station_.hub.faults();
  const auto of_victim = decimal(station_.locomotive(victim).id) + ",";
  switch (fault) {
    case LinkFault::refuse_item:
      return faults.fail("set(" + of_victim + "func[" + decimal(refused_function), no_control);
    case LinkFault::refuse_locomotive:
      return faults.fail("request(" + of_victim, no_control);
    case LinkFault::no_answer:
      return faults.silence("set(" + of_victim);
    case LinkFault::late_answer:
      faults.late = chance.between(least_late, most_late);
      exchange_ = faults.late + quick_exchange;
      return;
    case LinkFault::drop:
      block_from_now();
      return station_.kill();
    case LinkFault::half_open:
      return vanish();
    case LinkFault::flood:
      return flood(chance);
    case LinkFault::slow:
      faults.pieces = station_.write_limit = 1;
      faults.gap = station_.write_time = piece_time;
      exchange_ = slow_exchange;
  }
}

void EcosStationLink::vanish() {
  block_from_now();
  cut_.reset();
  if (station_.hub.client_count() > 0) cut_ = Clock::now();
  station_.vanish();
}

void EcosStationLink::flood(Chance& chance) {
  flood_ = Timeout::every(1ms, [this, &chance] {
    station_.inject(unasked(chance));
    return true;
  });
}

void EcosStationLink::lift(LinkFault fault, bool by_hand) {
  station_.hub.faults().clear();
  station_.write_limit = MemoryStation().write_limit;
  station_.write_time = 0ms;
  station_.up = true;
  station_.appear();
  flood_.cancel();
  exchange_ = quick_exchange;
  const auto noticed = cut_ ? *cut_ + station_.keep_alive : Clock::now();
  if (by_hand && (unanswered_ || (fault == LinkFault::half_open && noticed > Clock::now()))) {
    device_->reconnect();
  } else if (fault == LinkFault::half_open) {
    block_until(std::max(noticed, Clock::now()));
  } else if (unanswered_) {
    station_.hub.receive(unanswered_->client, unanswered_->line + "\n");
  }
  unanswered_.reset();
}

}  // namespace zemblar::simulator

#include "simulator/bus/bus_faults.h"

#include <array>

namespace zemblar::simulator {
namespace {

using Failing = const FailingBus&;

constexpr unsigned most_errors = 10;

std::uint8_t some_address(Failing failing) {
  return static_cast<std::uint8_t>(1 + failing.chance.below(failing.bus.reader_count()));
}
ReaderHardware& some_reader(Failing failing) {
  return failing.bus.reader(some_address(failing));
}

void pull_out(Failing failing) {
  failing.bus.unplug();
}
void plug_in(Failing failing) {
  if (!failing.bus.plugged_in()) failing.bus.plug_into(failing.hardware);
}
void end_faults(Failing failing) {
  failing.bus.master.end_faults();
}
void end_cut(Failing failing) {
  end_faults(failing);
  pull_out(failing);
  plug_in(failing);
}

void lose_power(Failing failing) {
  failing.bus.unplug();
  failing.bus.master.restart();
}

void replace(Failing failing) {
  pull_out(failing);
  failing.bus.master.options.serial_nr += "?";
  plug_in(failing);
}
void put_back(Failing failing) {
  pull_out(failing);
  failing.bus.master.options.serial_nr.pop_back();
  plug_in(failing);
}

void end_reader_faults(Failing failing) {
  for (std::size_t i = 1; i <= failing.bus.reader_count(); ++i) {
    const auto address = static_cast<std::uint8_t>(i);
    failing.bus.reader(address).faults = {};
    failing.bus.reconnect(address);
  }
}

void send_garbage(Failing failing) {
  auto& garbage = some_reader(failing).faults.garbage;
  garbage.resize(1 + failing.chance.below(40));
  for (auto& byte : garbage) byte = static_cast<char>(failing.chance.below(256));
}

const std::array faults{
    BusFault{"the master is silent",
             [](Failing failing) { failing.bus.master.faults.silent = true; }, end_faults},
    BusFault{"an answer does not end",
             [](Failing failing) { failing.bus.master.faults.endless = true; }, end_faults},
    BusFault{"the master refuses frames",
             [](Failing failing) {
               failing.bus.master.faults.errors =
                   1 + static_cast<unsigned>(failing.chance.below(most_errors));
             },
             end_faults},
    BusFault{"the master is never ready",
             [](Failing failing) { failing.bus.master.faults.never_ready = true; }, end_faults},
    BusFault{"devices are never done",
             [](Failing failing) { failing.bus.master.faults.never_done = true; }, end_faults},
    BusFault{
        "answers miss a byte",
        [](Failing failing) { failing.bus.master.faults.lost_byte = failing.chance.below(12); },
        end_faults},
    BusFault{"cut off in an answer",
             [](Failing failing) { failing.bus.master.faults.cut_at = failing.chance.below(12); },
             end_cut},
    BusFault{"unplugged", pull_out, plug_in},
    BusFault{"without power", lose_power, plug_in},
    BusFault{"another master in its place", replace, put_back},
    BusFault{"a reader restarts", [](Failing failing) { some_reader(failing).restart(); },
             [](Failing) {}},
    BusFault{"a reader is off the bus",
             [](Failing failing) { failing.bus.disconnect(some_address(failing)); },
             end_reader_faults},
    BusFault{"poll answers miss their end",
             [](Failing failing) {
               some_reader(failing).faults.missing_end = 1 + failing.chance.below(4);
             },
             end_reader_faults},
    BusFault{"poll answers are garbage", send_garbage, end_reader_faults},
};

}  // namespace

std::span<const BusFault> bus_faults() {
  return faults;
}

}  // namespace zemblar::simulator

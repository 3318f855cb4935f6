#pragma once

#include <span>

#include "simulator/bus/memory_hardware.h"
#include "simulator/bus/simulated_bus.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

/// A bus with readers at the addresses from 1 on, the hardware list that it is plugged into, and
/// the source of random faults.
struct FailingBus {
  SimulatedBus& bus;
  MemoryHardware& hardware;
  Chance& chance;
};

/// A fault of the master, of its cable or of a reader.
struct BusFault {
  const char* name;
  void (*begin)(const FailingBus& failing);
  void (*end)(const FailingBus& failing);
};

[[nodiscard]] std::span<const BusFault> bus_faults();

}  // namespace zemblar::simulator

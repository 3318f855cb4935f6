#pragma once

#include <span>

#include "simulator/bus/memory_hardware.h"
#include "simulator/bus/simulated_bus.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

/// A bus with readers at the addresses from 1 on, what it is plugged into, and where its faults
/// come from.
struct FailingBus {
  SimulatedBus& bus;
  MemoryHardware& hardware;
  Chance& chance;
};

/// What the master of a bus, its cable or a reader may do.
struct BusFault {
  const char* name;
  void (*begin)(const FailingBus& failing);
  void (*end)(const FailingBus& failing);
};

[[nodiscard]] std::span<const BusFault> bus_faults();

}  // namespace zemblar::simulator

#pragma once

#include <chrono>
#include <vector>

#include "devices/port/hw_list.h"
#include "runtime/timer.h"
#include "simulator/bus/memory_hardware.h"
#include "simulator/bus/simulated_bus.h"

namespace zemblar {
class Device;
}

namespace zemblar::simulator {

/// A simulated bus that the program has found, scanned and taken into service with its own drivers,
/// in the current layout and in virtual time.
///
/// Throws std::runtime_error if that fails.
class BusInService {
 public:
  static constexpr unsigned inputs_each = 8;

  /// Readers at the addresses from 1 on.
  BusInService(VirtualClock& clock, unsigned readers);
  ~BusInService();
  BusInService(const BusInService&) = delete;
  BusInService& operator=(const BusInService&) = delete;

  [[nodiscard]] unsigned readers() const { return static_cast<unsigned>(readers_.size()); }
  /// The program's devices for the bus. Readers and inputs are counted from 0.
  [[nodiscard]] Device& master() { return *master_; }
  [[nodiscard]] Device& reader(unsigned index) { return *readers_.at(index); }
  [[nodiscard]] Device& input(unsigned reader, unsigned index);
  [[nodiscard]] bool all_in_service();

  [[nodiscard]] static std::uint8_t address_of(unsigned reader) {
    return static_cast<std::uint8_t>(reader + 1);
  }
  [[nodiscard]] ReaderHardware& hardware_of(unsigned reader) {
    return bus.reader(address_of(reader));
  }
  /// Wires the block's rails to an input, and makes that input the block's detector.
  void assign(Block& block, unsigned reader, unsigned index);

  /// Starts a scan, or ends it.
  void set_scanning(bool on);
  [[nodiscard]] bool scanning();

  SimulatedBus bus;
  MemoryHardware* hardware;  // the list's

 private:
  void expect(bool condition, const char* what);
  void find_devices();

  VirtualClock& clock_;
  HWList list_;
  Device* master_ = nullptr;
  std::vector<Device*> readers_;
};

}  // namespace zemblar::simulator

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "devices/port/hw_device.h"
#include "runtime/scoped_connection.h"
#include "simulator/bus/reader_hardware.h"
#include "simulator/bus/serial_cable.h"
#include "simulator/bus/tessara_master.h"

namespace zemblar {
class Block;
}

namespace zemblar::simulator {

class MemoryHardware;
class TrackModel;

/// A Tessara bus in software: its master, its readers, and the blocks of a layout whose rails are
/// wired to their inputs.
///
///     SimulatedBus bus;
///     bus.add_reader(1);
///     bus.wire(block, 1, 0);
///     bus.serve(track);
///     bus.plug_into(hardware);
class SimulatedBus {
 public:
  explicit SimulatedBus(const std::string& port_name = "simulated-bus");
  ~SimulatedBus();
  SimulatedBus(const SimulatedBus&) = delete;
  SimulatedBus& operator=(const SimulatedBus&) = delete;

  /// Adds a reader at an address, or replaces the one there. Its serial number is derived from the
  /// address.
  ReaderHardware& add_reader(std::uint8_t address, unsigned inputs = 8);
  [[nodiscard]] ReaderHardware& reader(std::uint8_t address) { return *readers_.at(address); }
  [[nodiscard]] std::size_t reader_count() const { return readers_.size(); }
  /// Disconnects a reader from the bus, or reconnects it; the reader keeps its state.
  void disconnect(std::uint8_t address) { master.detach(address); }
  void reconnect(std::uint8_t address) { master.attach(address, reader(address)); }

  /// Wires a block's rails to an input, independently of the detector that the block has in the
  /// layout.
  void wire(const Block& block, std::uint8_t address, unsigned input);
  /// Wires the rails to the hardware of the input that the block has in the layout, by the reader's
  /// address and the input's index. Does nothing if the block has no such input.
  void wire_to_input(const Block& block);
  /// The detector that the block's rails are wired to, or null.
  [[nodiscard]] TrackDetector* detector_of(const Block* block) const;
  /// Connects the model's trains on wired blocks to the readers. The model must not outlive the
  /// bus.
  void serve(TrackModel& model);

  /// The system's description of the master.
  [[nodiscard]] HWDevice record() const;
  void plug_into(MemoryHardware& hardware);
  /// Unplugs the cable first, as in reality, where the system notices it later.
  void unplug();
  [[nodiscard]] bool plugged_in() const { return hardware_ != nullptr; }

  SerialCable cable;
  TessaraMaster master{cable};

 private:
  std::string port_name_;
  std::map<std::uint8_t, std::unique_ptr<ReaderHardware>> readers_;
  std::map<const Block*, std::pair<std::uint8_t, unsigned>> wires_;
  MemoryHardware* hardware_ = nullptr;
  ScopedConnection block_ending_;
};

}  // namespace zemblar::simulator

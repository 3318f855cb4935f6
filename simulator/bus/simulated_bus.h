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

  /// At an address without one; or another one in place of what is there. Its serial number is made
  /// of the address.
  ReaderHardware& add_reader(std::uint8_t address, unsigned inputs = 8);
  [[nodiscard]] ReaderHardware& reader(std::uint8_t address) { return *readers_.at(address); }
  [[nodiscard]] std::size_t reader_count() const { return readers_.size(); }
  /// Off the bus, or on it again: it keeps what it was told.
  void disconnect(std::uint8_t address) { master.detach(address); }
  void reconnect(std::uint8_t address) { master.attach(address, reader(address)); }

  /// Wires a block's rails to an input. The block's own choice of a detector is another matter.
  void wire(const Block& block, std::uint8_t address, unsigned input);
  /// The same, to the hardware of the input that the block has chosen: by its place in its reader
  /// and the reader's address. Does nothing when that is no input of such a reader.
  void wire_to_input(const Block& block);
  /// What the block's rails are wired to; null for a block without wires.
  [[nodiscard]] TrackDetector* detector_of(const Block* block) const;
  /// What the model's trains do to wired blocks goes to the readers. The model must not outlive the
  /// bus.
  void serve(TrackModel& model);

  /// As the system tells of it.
  [[nodiscard]] HWDevice record() const;
  void plug_into(MemoryHardware& hardware);
  /// The cable first, as it really happens: the system notices later.
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

#pragma once

#include <cstdint>

#include "simulator/bus/memory_hardware.h"
#include "simulator/railway/layout_railway.h"
#include "simulator/stations/ecos_station.h"
#include "simulator/stations/liusb_interface.h"
#include "simulator/stations/station_console.h"

namespace zemblar::demo {

/// The railway of the demonstration: a command station on this machine, trains on the blocks of the
/// open layout that do what it tells them, and a bus with RailCom readers for their detectors. What
/// the station is told and what the trains do is printed.
///
/// The drivers that the program has for such hardware talk to it as to the real one: over the
/// network, and over serial ports that it finds.
class Railway {
 public:
  Railway();
  ~Railway();
  Railway(const Railway&) = delete;
  Railway& operator=(const Railway&) = delete;

  /// Where the station listens.
  [[nodiscard]] std::uint16_t port() { return station_.port(); }
  /// Plugs in the bus.
  void plug_bus_into(simulator::MemoryHardware& hardware) { railway_.bus.plug_into(hardware); }
  /// Plugs in a LI-USB as well, which drives the same trains.
  void plug_liusb_into(simulator::MemoryHardware& hardware);
  /// Wires the blocks of the open layout, and puts the trains on it that it has places for.
  void build();
  /// Carries out what a person types: the commands of StationConsole, and after "liusb" those of
  /// the LI-USB. Throws std::invalid_argument when the line makes no sense.
  std::string obey(std::string_view line);

 private:
  void on_station(const simulator::EcosLogEntry& entry);
  void on_liusb(std::string_view bytes);
  void on_track(const simulator::TrackEvent& event);
  void drive(unsigned address, unsigned step, bool forwards);

  simulator::EcosStation station_;
  simulator::StationConsole console_{station_, [] {}};
  simulator::SerialCable liusb_cable_;
  simulator::LiUsbInterface liusb_;
  simulator::LayoutRailway railway_;
};

}  // namespace zemblar::demo

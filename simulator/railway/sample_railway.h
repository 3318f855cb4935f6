#pragma once

#include <string>

#include "core/layout.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "simulator/bus/memory_hardware.h"
#include "simulator/railway/ecos_station_link.h"
#include "simulator/railway/layout_railway.h"

namespace zemblar::simulator {

/// One of the sample layouts as it is shipped, opened and in service: over the program's own
/// drivers, a simulated ECoS, and the bus and the trains of a `LayoutRailway`. In virtual time.
///
/// The program's hardware list reads from this railway, so only one can exist at a time. Throws
/// std::runtime_error if the layout cannot be opened or a train is not detected.
class SampleRailway {
 public:
  SampleRailway(const std::string& path, std::uint64_t seed);
  ~SampleRailway();
  SampleRailway(const SampleRailway&) = delete;
  SampleRailway& operator=(const SampleRailway&) = delete;

  /// Opens a layout in the place of the current one. Throws std::runtime_error with the status
  /// line.
  static void open(const std::string& path);
  /// The locomotive of that name. Throws std::runtime_error if there is none.
  [[nodiscard]] static Lok& lok(const std::string& name);

  MemoryHardware* hardware;  // the program's list's
  VirtualClock clock;

 private:
  struct Document {
    explicit Document(const std::string& path);
  };

  void obey(const Executed& executed);
  void take_into_service();
  void end();

  Document document_;

 public:
  EcosStationLink station{0};
  LayoutRailway railway;
};

}  // namespace zemblar::simulator

#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "simulator/stations/ecos_station.h"

namespace zemblar::simulator {

/// The commands that the user types to operate a station: its keys, its locomotives, its faults.
///
/// `help` lists the commands. The station must outlive the console.
class StationConsole {
 public:
  /// `quit` is called by the command of that name.
  StationConsole(EcosStation& station, std::function<void()> quit)
      : station_(station), quit_(std::move(quit)) {}

  /// Carries out one line and returns the answer, which may be empty; its lines are separated by
  /// line feeds. Throws std::invalid_argument, with a text for the user, if the line is no command,
  /// and std::runtime_error if the station cannot carry it out.
  std::string run(std::string_view line);

 private:
  void open();
  void close();

  EcosStation& station_;
  std::function<void()> quit_;
  std::uint16_t port_ = 0;  // to open again after `close`
};

}  // namespace zemblar::simulator

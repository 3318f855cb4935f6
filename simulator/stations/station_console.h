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

  /// Carries out one line and returns the answer, lines ended by line feeds except the last;
  /// empty when there is nothing to say. Throws std::invalid_argument, with a text for the person,
  /// when the line makes no sense, std::runtime_error when the station cannot do it.
  std::string run(std::string_view line);

 private:
  void open();
  void close();

  EcosStation& station_;
  std::function<void()> quit_;
  std::uint16_t port_ = 0;  // to open again after `close`
};

}  // namespace zemblar::simulator

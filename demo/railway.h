#pragma once

#include <cstdint>
#include <vector>

#include "simulator/ecos_station.h"
#include "simulator/track_model.h"
#include "simulator/track_reader.h"

namespace zemblar::demo {

/// The railway of the demonstration: a command station on this machine, trains on the blocks of the
/// open layout that do what it tells them, and a reader in memory for their detectors. What goes
/// over the wire and what the trains do is printed.
///
/// The driver that the program has for such a station talks to it over the network, as to a real
/// one.
class Railway {
 public:
  Railway();
  ~Railway();
  Railway(const Railway&) = delete;
  Railway& operator=(const Railway&) = delete;

  /// Where the station listens.
  [[nodiscard]] std::uint16_t port() { return station_.port(); }
  /// Gives the layout's blocks their detectors and puts two trains on the line, one behind the
  /// other with a free block between. Does nothing to a layout without these blocks.
  void build();

 private:
  void attach_detectors();
  void put(const char* lok, const char* block, simulator::TrainOptions options);
  void on_station(const simulator::EcosLogEntry& entry);
  void on_track(const simulator::TrackEvent& event);

  simulator::EcosStation station_;
  simulator::TrackModel track_;
  simulator::TrackReader* reader_;  // in no tree: ended by hand
};

}  // namespace zemblar::demo

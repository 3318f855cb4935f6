#pragma once

#include <sigc++/signal.h>

#include <string_view>

namespace zemblar::simulator {

/// The rails' side of a detector: what it is told of the trains on its stretch of track.
class TrackDetector {
 public:
  TrackDetector() = default;
  virtual ~TrackDetector() { signal_ended_.emit(); }
  TrackDetector(const TrackDetector&) = delete;
  TrackDetector& operator=(const TrackDetector&) = delete;

  /// Current flows or not; the side that RailCom answers come from: 0 unknown, 1 or 2.
  virtual void set_current(bool on, unsigned side = 0) = 0;
  /// Hands in what was heard in the cutout after a DCC packet; no bytes are no answer.
  virtual void receive(std::string_view dcc, std::string_view bytes) = 0;

  [[nodiscard]] virtual bool current() const = 0;
  /// As it was told last; 0 without current.
  [[nodiscard]] virtual unsigned side() const = 0;

  /// It must not be told anything any more. May come twice.
  sigc::signal<void>& signal_ended() { return signal_ended_; }

 private:
  sigc::signal<void> signal_ended_;
};

}  // namespace zemblar::simulator

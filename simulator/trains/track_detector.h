#pragma once

#include <sigc++/signal.h>

#include <string_view>

namespace zemblar::simulator {

/// The track side of a detector: receives the current and RailCom answers of trains on its track.
class TrackDetector {
 public:
  TrackDetector() = default;
  virtual ~TrackDetector() { signal_ended_.emit(); }
  TrackDetector(const TrackDetector&) = delete;
  TrackDetector& operator=(const TrackDetector&) = delete;

  /// Sets whether current flows, and the side that RailCom answers come from: 0 unknown, 1 or 2.
  virtual void set_current(bool on, unsigned side = 0) = 0;
  /// Passes the bytes of the cutout after a DCC packet; empty for no answer.
  virtual void receive(std::string_view dcc, std::string_view bytes) = 0;

  [[nodiscard]] virtual bool current() const = 0;
  /// The side set last; 0 without current.
  [[nodiscard]] virtual unsigned side() const = 0;

  /// The detector must not be used any more. May be emitted twice.
  sigc::signal<void>& signal_ended() { return signal_ended_; }

 private:
  sigc::signal<void> signal_ended_;
};

}  // namespace zemblar::simulator

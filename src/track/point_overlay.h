#pragma once

#include <list>

#include "runtime/scoped_connection.h"

namespace zemblar {

class PointBase;
class PointState;

/// One level of temporary states that a script has set points and signals to.
///
/// Levels are ordered by the time at which they were made. When a level is removed, each of its
/// points goes back to the state that the level before has given it, or that it had before any. A
/// point that somebody else has set meanwhile stays as it is, and so does a protected one; see
/// point_guard.h.
class PointOverlay {
 public:
  PointOverlay();
  ~PointOverlay();
  PointOverlay(const PointOverlay&) = delete;
  PointOverlay& operator=(const PointOverlay&) = delete;

  /// Sets the point, to be taken back by `remove`.
  void set(PointBase& point, PointState& state);
  /// Takes everything back.
  void remove();

 private:
  /// A point that this level has set. Pointers are null after the end of what they point to.
  struct Entry {
    explicit Entry(PointBase& set_point);
    void watch_state(PointState& set_state);
    void watch_former(PointState* below);

    PointBase* point;
    PointState* state = nullptr;
    PointState* former = nullptr;  // below this level
    ScopedConnection point_ended;
    ScopedConnection state_ended;
    ScopedConnection former_ended;
  };

  [[nodiscard]] Entry* find(const PointBase& point);
  /// The entry for the point of the next level that has one.
  [[nodiscard]] Entry* find_above(const PointBase& point);
  void withdraw();

  std::list<Entry> entries_;  // in the order of their first use
};

}  // namespace zemblar

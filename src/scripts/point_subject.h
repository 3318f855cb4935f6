#pragma once

#include "scripts/object_subject.h"
#include "track/point_base.h"

namespace zemblar {

/// A point or signal that a line of a script names, with one of its states. A state that ends, and
/// one of another point, is cleared.
///
/// In a layout file two elements: the number of the point and that of the state, each null if there
/// is none.
class PointSubject : public sigc::trackable {
 public:
  PointSubject();

  [[nodiscard]] PointBase* get_point() const { return point_.get(); }
  [[nodiscard]] PointState* get_state() const { return state_.get(); }
  /// Sets the point, with its present state.
  void set_point(PointBase* point);
  void set_state(PointState* state) { state_.set(state); }
  /// True if the point is in the state.
  [[nodiscard]] bool holds() const;

  [[nodiscard]] Glib::ustring point_text() const;
  [[nodiscard]] Glib::ustring state_text() const;

  void save(YAML::Emitter& out) const;
  /// Reads two elements of the entry. `signal_changed` tells when the references are resolved.
  void load(const YAML::Node& entry, unsigned place);

  /// The point or the state is ending, and is about to be cleared.
  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// The point or the state has been cleared, or references have been resolved.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  ObjectSubject<PointBase> point_;
  ObjectSubject<PointState> state_;
  sigc::signal<void> signal_changing_;
  sigc::signal<void> signal_changed_;
};

}  // namespace zemblar

#pragma once

#include <atk/atk.h>

#include <map>
#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

class RuntimeView;
class ViewObj;

/// What assistive technology is told of an operating display: each switch as a child of the canvas,
/// named after its state, with the action "click". Belongs to the canvas.
///
/// Nothing is made before somebody asks, and nothing at all where the toolkit has no accessibility.
class SwitchAccessibles {
 public:
  explicit SwitchAccessibles(RuntimeView& canvas) : canvas_(canvas) {}
  ~SwitchAccessibles();
  SwitchAccessibles(const SwitchAccessibles&) = delete;
  SwitchAccessibles& operator=(const SwitchAccessibles&) = delete;

  /// The accessible of the canvas; null without accessibility.
  AtkObject* get();

  /// In reading order, as the children are counted.
  [[nodiscard]] const std::vector<ViewObj*>& switches();
  /// Null for an object that is no switch of the canvas.
  AtkObject* child_of(ViewObj* drawn);
  [[nodiscard]] RuntimeView& canvas() const { return canvas_; }

  /// Something has changed in the view; null when it may be anything.
  void on_changed(ViewObj* drawn);
  void on_added(ViewObj* drawn);
  void on_removed(ViewObj* drawn);
  /// The keyboard acts on this one now.
  void on_marked(ViewObj* former, ViewObj* drawn);

 private:
  struct Child {
    AtkObject* accessible = nullptr;  // owned
    ScopedConnection renamed;
  };

  static void drop(Child& child);
  void refresh_name(ViewObj& drawn);

  RuntimeView& canvas_;
  AtkObject* accessible_ = nullptr;  // owned
  std::map<const ViewObj*, Child> children_;
  std::vector<ViewObj*> switches_;
  bool switches_known_ = false;
};

}  // namespace zemblar

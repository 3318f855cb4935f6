#pragma once

#include <atk/atk.h>

#include <map>
#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

class RuntimeView;
class ViewObj;

/// The accessible children of an operating display: one for each switch, named after the switch and
/// its state, with the action "click". A member of the canvas.
///
/// Children are made on demand. Without accessibility in the toolkit, nothing is made.
class SwitchAccessibles {
 public:
  explicit SwitchAccessibles(RuntimeView& canvas) : canvas_(canvas) {}
  ~SwitchAccessibles();
  SwitchAccessibles(const SwitchAccessibles&) = delete;
  SwitchAccessibles& operator=(const SwitchAccessibles&) = delete;

  /// The accessible of the canvas; null without accessibility.
  AtkObject* get();

  /// The switches in reading order, which is the order of the children.
  [[nodiscard]] const std::vector<ViewObj*>& switches();
  /// The child of a switch; null for any other object.
  AtkObject* child_of(ViewObj* drawn);
  [[nodiscard]] RuntimeView& canvas() const { return canvas_; }

  /// Call when an object in the view has changed; null means that anything may have changed.
  void on_changed(ViewObj* drawn);
  void on_added(ViewObj* drawn);
  void on_removed(ViewObj* drawn);
  /// Call when the marked switch has changed.
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

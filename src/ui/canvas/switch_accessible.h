#pragma once

#include <atk/atk.h>

#include <map>
#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

class RuntimeView;
class ViewObj;

/// The accessible children of an operating display: one for each switch, named after its state,
/// with the action "click". Belongs to the canvas.
///
/// Children are made as they are asked for. Nothing at all is made where the toolkit has no
/// accessibility.
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

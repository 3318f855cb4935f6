#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class ViewObj;

/// Called before each change of what a layout file would hold of the diagrams, so that the change
/// can be undone. There is at most one watcher.
class DiagramWatcher {
 public:
  virtual ~DiagramWatcher() = default;

  /// A diagram object is about to change.
  virtual void before_change(ViewObj& object) = 0;
  /// The object's z-order in its view is about to change.
  virtual void before_move(ViewObj& object) = 0;
  /// The object is about to be removed from its view; it is still in the view.
  virtual void before_removal(ViewObj& object) = 0;
  virtual void removed(ViewObj& object) = 0;
  virtual void added(ViewObj& object) = 0;
  /// Names the present step in place of the usual name, for example "Join “%1”".
  virtual void describe(const Glib::ustring& format) = 0;

  /// The installed watcher, or null.
  static DiagramWatcher* get() { return current_; }
  static void set(DiagramWatcher* watcher) { current_ = watcher; }
  /// Calls `describe` of the installed watcher, if there is one.
  static void name_step(const Glib::ustring& format) {
    if (current_) current_->describe(format);
  }

 private:
  static inline DiagramWatcher* current_ = nullptr;
};

}  // namespace zemblar

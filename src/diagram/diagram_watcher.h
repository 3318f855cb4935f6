#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class ViewObj;

/// Is told of everything that changes what a layout file would hold of the diagrams, before it
/// happens. There is one at most.
class DiagramWatcher {
 public:
  virtual ~DiagramWatcher() = default;

  /// A diagram object is about to change.
  virtual void before_change(ViewObj& object) = 0;
  /// Its place in the order of drawing is.
  virtual void before_move(ViewObj& object) = 0;
  /// It is about to leave its view, which it is in still.
  virtual void before_removal(ViewObj& object) = 0;
  virtual void removed(ViewObj& object) = 0;
  virtual void added(ViewObj& object) = 0;
  /// What is done now, in words that take the place of the usual ones: "Join “%1”".
  virtual void describe(const Glib::ustring& format) = 0;

  /// Null for nobody.
  static DiagramWatcher* get() { return current_; }
  static void set(DiagramWatcher* watcher) { current_ = watcher; }
  /// Tells it, if there is one.
  static void tell(const Glib::ustring& format) {
    if (current_) current_->describe(format);
  }

 private:
  static inline DiagramWatcher* current_ = nullptr;
};

}  // namespace zemblar

#pragma once

namespace zemblar {

class Object;

/// Called before each change of what a layout file would hold, so that the change can be undone.
/// There is at most one watcher.
class DocumentWatcher {
 public:
  virtual ~DocumentWatcher() = default;

  /// A value in the entry of the object, or in the entry of one of its ancestors, is about to
  /// change.
  virtual void before_change(Object& object) = 0;
  /// The object is about to move to another place among its siblings, or to `parent`.
  virtual void before_move(Object& object, Object& parent) = 0;
  /// The object and all its descendants are about to end.
  virtual void before_end(Object& object) = 0;
  /// All handlers of the object's end have run; nobody refers to the object any more.
  virtual void ended(const Object& object) = 0;
  /// The object has been added to the current layout; `signal_object_added` follows.
  virtual void added(Object& object) = 0;

  /// The installed watcher, or null.
  static DocumentWatcher* get() { return current_; }
  static void set(DocumentWatcher* watcher) { current_ = watcher; }

 private:
  static inline DocumentWatcher* current_ = nullptr;
};

}  // namespace zemblar

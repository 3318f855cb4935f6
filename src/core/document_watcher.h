#pragma once

namespace zemblar {

class Object;

/// Is told of everything that changes what a layout file would hold, before it happens: so that it
/// can be taken back. There is one at most.
class DocumentWatcher {
 public:
  virtual ~DocumentWatcher() = default;

  /// Something that belongs to the entry of the object, or of one above it, is about to change.
  virtual void before_change(Object& object) = 0;
  /// The object is about to go to another place, among its siblings or those below `parent`.
  virtual void before_move(Object& object, Object& parent) = 0;
  /// The object is about to end, with all below it.
  virtual void before_end(Object& object) = 0;
  /// Everybody has let go of the object.
  virtual void ended(const Object& object) = 0;
  /// The object has been put into the current layout; nobody else has heard of it yet.
  virtual void added(Object& object) = 0;

  /// Null for nobody.
  static DocumentWatcher* get() { return current_; }
  static void set(DocumentWatcher* watcher) { current_ = watcher; }

 private:
  static inline DocumentWatcher* current_ = nullptr;
};

}  // namespace zemblar

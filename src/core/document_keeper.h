#pragma once

#include <string>

namespace zemblar {

/// Is told of the moments at which work that is in no file could get lost, so that it can be kept.
/// There is one at most. It does not throw.
class DocumentKeeper {
 public:
  virtual ~DocumentKeeper() = default;

  /// New is about to empty the document, or Open to replace it, if what it opens can be read.
  virtual void before_drop() = 0;
  /// The current layout holds another document: an empty one, or what has been opened.
  virtual void begun() = 0;
  /// Save As has been given this path.
  virtual void before_overwrite(const std::string& path) = 0;
  /// The document has been written to its file, which holds the whole of it or only a part.
  virtual void saved(bool whole) = 0;

  /// Null for nobody.
  static DocumentKeeper* get() { return current_; }
  static void set(DocumentKeeper* keeper) { current_ = keeper; }

 private:
  static inline DocumentKeeper* current_ = nullptr;
};

}  // namespace zemblar

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
  /// What is at this path is about to be replaced by something that was not made of it. False if it
  /// cannot be kept.
  virtual bool before_overwrite(const std::string& path) = 0;
  /// The complete file beside that layout file is about to go, and was not made of the document.
  /// False if it cannot be kept.
  virtual bool before_losing_complete(const std::string& path) = 0;
  /// The document has been written to its file, or to that and the complete file beside it.
  virtual void saved() = 0;
  /// The layout file at this path cannot be opened, nor can a complete file that belongs to it.
  virtual void could_not_open(const std::string& path) = 0;
  /// The layout file at this path has been opened, so a complete file beside it is of another time.
  virtual void opened_whole(const std::string& path) = 0;

  /// Null for nobody.
  static DocumentKeeper* get() { return current_; }
  static void set(DocumentKeeper* keeper) { current_ = keeper; }

 private:
  static inline DocumentKeeper* current_ = nullptr;
};

}  // namespace zemblar

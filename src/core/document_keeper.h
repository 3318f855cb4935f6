#pragma once

#include <string>

namespace zemblar {

/// Called at the moments at which unsaved work could get lost, so that it can keep a copy. There is
/// at most one keeper. Its functions do not throw.
class DocumentKeeper {
 public:
  virtual ~DocumentKeeper() = default;

  /// New is about to empty the document, or Open is about to replace it. The Open may still fail.
  virtual void before_drop() = 0;
  /// The current layout now holds another document: an empty one, or the opened one.
  virtual void document_begun() = 0;
  /// The file at `path` is about to be overwritten by a document that was not opened from it. False
  /// if no copy can be kept.
  virtual bool before_overwrite(const std::string& path) = 0;
  /// The complete file beside the layout file `path` is about to be replaced or removed, and does
  /// not hold the present document. False if no copy can be kept.
  virtual bool before_losing_complete(const std::string& path) = 0;
  /// The document has been saved to its file, and to the complete file beside it if there is one.
  virtual void saved() = 0;
  /// The layout file at this path cannot be opened, nor can a complete file that belongs to it.
  virtual void could_not_open(const std::string& path) = 0;
  /// The layout file at this path has been opened itself, so a complete file beside it belongs to
  /// another version.
  virtual void opened_whole(const std::string& path) = 0;

  /// The installed keeper, or null.
  static DocumentKeeper* get() { return current_; }
  static void set(DocumentKeeper* keeper) { current_ = keeper; }

 private:
  static inline DocumentKeeper* current_ = nullptr;
};

}  // namespace zemblar

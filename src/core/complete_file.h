#pragma once

#include <giomm/file.h>

#include <string>
#include <string_view>
#include <vector>

namespace zemblar {

/// The whole document beside a layout file that was cut off at an object which it cannot hold:
/// `NAME.zblt.complete`, in the private form.
///
/// It carries the digests of the layout files that it belongs to: that of the new, cut file and
/// that of the old file that the cut file is about to replace. So after a kill between the two
/// writes the complete file still belongs to the old file.
class CompleteFile {
 public:
  /// `layout` is the path of the layout file.
  explicit CompleteFile(const std::string& layout);

  /// Reads the complete file. False if it is missing or damaged.
  bool read();
  /// Uses `bytes` as the content of the complete file. False if they are damaged.
  bool take(std::string_view bytes);
  [[nodiscard]] bool belongs_to(const std::string& digest) const;
  /// True if `digest` is that of the cut file, not of the file that was about to be replaced.
  [[nodiscard]] bool was_written_with(const std::string& digest) const;
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const std::string& path() const { return path_; }

  /// True also if the file cannot be read, or is no complete file.
  [[nodiscard]] bool exists() const;
  /// Reads the file and returns the digest of its text; empty if `read` fails.
  [[nodiscard]] std::string digest();

  /// Replaces the file. It gets the permissions of the layout file, and its owner can always read
  /// and write it. A damaged old file is renamed, and the status line says so. The first of
  /// `digests` is that of the cut file. Throws Gio::Error.
  void write(std::vector<std::string> digests, std::string_view text);
  /// Removes the file, unless it is no complete file.
  void remove();

 private:
  void set_aside() const;

  std::string layout_;
  std::string path_;
  std::vector<std::string> digests_;
  std::string text_;
};

}  // namespace zemblar

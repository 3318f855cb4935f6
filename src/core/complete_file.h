#pragma once

#include <giomm/file.h>

#include <string>
#include <string_view>
#include <vector>

namespace zemblar {

/// The whole document beside a layout file that was cut off at an object which it cannot hold:
/// `NAME.zblt.complete`, in the private form.
///
/// It belongs to files with certain bytes, whose digests it carries: to the cut file, and to the
/// one that this is about to replace. So a program that is killed between the two writes leaves an
/// old cut file with the new document.
class CompleteFile {
 public:
  /// For the layout file at that path.
  explicit CompleteFile(const std::string& layout);

  /// Reads what is there. False if there is nothing, or something damaged.
  bool read();
  /// Takes that for what is there. False if it is damaged.
  bool take(std::string_view bytes);
  [[nodiscard]] bool belongs_to(const std::string& digest) const;
  /// Whether the file with that digest is the cut one, and not one that was about to be replaced.
  [[nodiscard]] bool was_written_with(const std::string& digest) const;
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const std::string& path() const { return path_; }

  /// True also for a file that cannot be read, or is something else.
  [[nodiscard]] bool exists() const;
  /// Reads the file; the digest of its text, or empty if `read` is false.
  [[nodiscard]] std::string digest();

  /// Replaces the file; it gets the permissions of the layout file, and can always be written by
  /// its owner. One that is damaged keeps its bytes under another name, and the status line says
  /// so. The first digest is that of the cut file. Throws Gio::Error.
  void write(std::vector<std::string> digests, std::string_view text);
  /// Removes the file, unless it is something else.
  void remove();

 private:
  void set_aside() const;

  std::string layout_;
  std::string path_;
  std::vector<std::string> digests_;
  std::string text_;
};

}  // namespace zemblar

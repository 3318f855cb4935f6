#pragma once

#include <glib.h>

#include <optional>
#include <string>
#include <string_view>

namespace zemblar {

/// A backup text that belongs to a layout file: header lines that describe it, an empty line, and
/// the text.
struct KeptText {
  enum class Kind {
    unsaved,   ///< a document, in the private form
    replaced,  ///< the former content of a file that another document has overwritten
    complete   ///< the whole document of a file that was cut off, in the private form
  };

  Kind kind = Kind::unsaved;
  std::string layout;  ///< path of the layout file; empty for a document without one
  gint64 time = 0;     ///< when the copy was made, in microseconds since 1970, UTC
  bool quit = false;   ///< the copy was made when the user quit the program
  std::string text;

  [[nodiscard]] bool in_private_form() const { return kind != Kind::replaced; }
  [[nodiscard]] std::string bytes() const { return bytes_with(text); }
  /// The same with `other` instead of `text`.
  [[nodiscard]] std::string bytes_with(std::string_view other) const;
  /// No value unless `bytes` made the file and it is complete. `bytes` may be only the beginning of
  /// a file of `file_size` bytes; then `text` is incomplete.
  [[nodiscard]] static std::optional<KeptText> parse(std::string_view bytes, std::size_t file_size);
};

}  // namespace zemblar

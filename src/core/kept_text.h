#pragma once

#include <glib.h>

#include <optional>
#include <string>
#include <string_view>

namespace zemblar {

/// A text that is kept beside the layout file that it belongs to: some lines that say what it is,
/// an empty line, and the text.
struct KeptText {
  enum class Kind {
    unsaved,   ///< a document, in the private form
    replaced,  ///< what a file held before another document was saved there
    complete   ///< the whole document of a file that was cut off, in the private form
  };

  Kind kind = Kind::unsaved;
  std::string layout;  ///< path of the layout file; empty for a document without one
  gint64 time = 0;     ///< when it was taken, in microseconds since 1970, UTC
  bool quit = false;   ///< it was taken when the program ended in good order
  std::string text;

  [[nodiscard]] bool in_private_form() const { return kind != Kind::replaced; }
  [[nodiscard]] std::string bytes() const { return bytes_with(text); }
  /// The same with another text in the place of `text`.
  [[nodiscard]] std::string bytes_with(std::string_view other) const;
  /// None for anything that `bytes` has not made, and for what has been cut off. `bytes` may be the
  /// mere beginning of a file of `file_size`; then only a part of the text is there.
  [[nodiscard]] static std::optional<KeptText> parse(std::string_view bytes, std::size_t file_size);
};

}  // namespace zemblar

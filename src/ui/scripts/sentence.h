#pragma once

#include <glibmm/ustring.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace zemblar {

/// A text with arguments, and the positions of these.
class Sentence {
 public:
  /// One argument. `begin` and `end` are byte offsets in the text, as in Pango.
  struct Argument {
    unsigned number;
    std::size_t begin;
    std::size_t end;
  };

  /// In the format `%n` stands for argument n, `%%` for a percent sign. `%` in the text of an
  /// argument has no meaning.
  Sentence(const Glib::ustring& format,
           const std::function<Glib::ustring(unsigned number)>& text_of);

  [[nodiscard]] const Glib::ustring& text() const { return text_; }
  /// The arguments in reading order.
  [[nodiscard]] const std::vector<Argument>& arguments() const { return arguments_; }

 private:
  Glib::ustring text_;
  std::vector<Argument> arguments_;
};

}  // namespace zemblar

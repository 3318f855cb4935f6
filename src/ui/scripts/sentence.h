#pragma once

#include <glibmm/ustring.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace zemblar {

/// A text with arguments in it, and where these stand.
class Sentence {
 public:
  /// One argument. `begin` and `end` count the bytes of the text, as Pango does.
  struct Argument {
    unsigned number;
    std::size_t begin;
    std::size_t end;
  };

  /// `%n` in the format stands for argument n, `%%` for a percent sign. The arguments' own texts
  /// are taken as they are.
  Sentence(const Glib::ustring& format,
           const std::function<Glib::ustring(unsigned number)>& text_of);

  [[nodiscard]] const Glib::ustring& text() const { return text_; }
  /// In the order in which they are read.
  [[nodiscard]] const std::vector<Argument>& arguments() const { return arguments_; }

 private:
  Glib::ustring text_;
  std::vector<Argument> arguments_;
};

}  // namespace zemblar

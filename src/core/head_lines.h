#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zemblar {

/// The header lines "name: value" at the start of a file that only this program reads. An empty
/// line ends the header.
class HeadLines {
 public:
  /// Parses `first_line` and the header lines, and removes them from the front of `bytes`. No value
  /// if `first_line` or the empty line is missing.
  [[nodiscard]] static std::optional<HeadLines> take(std::string_view& bytes,
                                                     std::string_view first_line);

  /// The value of a line. Throws std::out_of_range if there is no such line.
  [[nodiscard]] const std::string& at(const std::string& name) const { return lines_.at(name); }
  /// No value unless the line holds a decimal number.
  template <typename Number>
  [[nodiscard]] std::optional<Number> number(const std::string& name) const;

 private:
  std::map<std::string, std::string> lines_;
};

}  // namespace zemblar

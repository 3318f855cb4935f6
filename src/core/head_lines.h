#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zemblar {

/// The lines "name: value" before the text of a file that only this program reads. An empty line
/// ends them.
class HeadLines {
 public:
  /// Takes the lines off the bytes, with `first_line` before them. None if anything is missing.
  [[nodiscard]] static std::optional<HeadLines> take(std::string_view& bytes,
                                                     std::string_view first_line);

  /// Throws std::out_of_range if there is no such line.
  [[nodiscard]] const std::string& at(const std::string& name) const { return lines_.at(name); }
  /// None for anything but a decimal number.
  template <typename Number>
  [[nodiscard]] std::optional<Number> number(const std::string& name) const;

 private:
  std::map<std::string, std::string> lines_;
};

}  // namespace zemblar

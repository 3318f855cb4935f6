#include "core/head_lines.h"

#include <glib.h>

#include <charconv>

namespace zemblar {

std::optional<HeadLines> HeadLines::take(std::string_view& bytes, std::string_view first_line) {
  if (!bytes.starts_with(first_line)) return std::nullopt;
  bytes.remove_prefix(first_line.size());
  HeadLines head;
  for (;;) {
    const auto end = bytes.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    const auto line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    if (line.empty()) return head;
    const auto colon = line.find(": ");
    if (colon == std::string_view::npos) return std::nullopt;
    head.lines_.emplace(line.substr(0, colon), line.substr(colon + 2));
  }
}

template <typename Number>
std::optional<Number> HeadLines::number(const std::string& name) const {
  const auto& text = at(name);
  const auto* end = text.data() + text.size();
  Number number{};
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

template std::optional<gint64> HeadLines::number(const std::string&) const;
template std::optional<std::size_t> HeadLines::number(const std::string&) const;

}  // namespace zemblar

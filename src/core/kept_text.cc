#include "core/kept_text.h"

#include <glibmm/convert.h>

#include <charconv>
#include <map>
#include <sstream>

namespace zemblar {
namespace {

constexpr std::string_view first_line = "Zemblar kept layout 1\n";

using Lines = std::map<std::string, std::string, std::less<>>;

/// Takes the lines off the bytes, up to the empty one. None when a line is damaged.
std::optional<Lines> take_lines(std::string_view& bytes) {
  Lines lines;
  for (;;) {
    const auto end = bytes.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    const auto line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    if (line.empty()) return lines;
    const auto colon = line.find(": ");
    if (colon == std::string_view::npos) return std::nullopt;
    lines.emplace(line.substr(0, colon), line.substr(colon + 2));
  }
}

template <typename Number>
bool read_number(const std::string& text, Number& number) {
  const auto* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

std::string KeptText::bytes_with(std::string_view other) const {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << first_line;
  out << "kind: " << (kind == Kind::unsaved ? "unsaved" : "replaced") << '\n';
  out << "layout: " << (layout.empty() ? "none" : Glib::filename_to_uri(layout).raw()) << '\n';
  out << "time: " << time << '\n';
  out << "quit: " << (quit ? "yes" : "no") << '\n';
  out << "size: " << other.size() << "\n\n";
  const auto head = out.str();
  std::string bytes;
  bytes.reserve(head.size() + other.size());
  return bytes.append(head).append(other);
}

std::optional<KeptText> KeptText::parse(std::string_view bytes, std::size_t file_size) try {
  const auto beyond = file_size - bytes.size();
  if (!bytes.starts_with(first_line)) return std::nullopt;
  bytes.remove_prefix(first_line.size());
  const auto lines = take_lines(bytes);
  if (!lines) return std::nullopt;
  KeptText kept;
  std::size_t size = 0;
  if (!read_number(lines->at("time"), kept.time)) return std::nullopt;
  if (!read_number(lines->at("size"), size) || size != bytes.size() + beyond) return std::nullopt;
  const auto& layout = lines->at("layout");
  if (layout != "none") kept.layout = Glib::filename_from_uri(layout);
  kept.kind = lines->at("kind") == "replaced" ? Kind::replaced : Kind::unsaved;
  kept.quit = lines->at("quit") == "yes";
  kept.text = bytes;
  return kept;
} catch (const std::out_of_range&) {
  return std::nullopt;
} catch (const Glib::Error&) {
  return std::nullopt;
}

}  // namespace zemblar

#include "core/kept_text.h"

#include <glibmm/convert.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

#include "core/head_lines.h"

namespace zemblar {
namespace {

constexpr std::string_view first_line = "Zemblar kept layout 1\n";

// The latest time that Glib::DateTime can show.
constexpr gint64 year_9999 = 253'370'764'800 * G_USEC_PER_SEC;

// In the order of the enumerators.
constexpr std::array<std::string_view, 3> kind_names{"unsaved", "replaced", "complete"};

std::optional<KeptText::Kind> kind_of(std::string_view name) {
  const auto* const found = std::ranges::find(kind_names, name);
  if (found == kind_names.end()) return std::nullopt;
  return static_cast<KeptText::Kind>(found - kind_names.begin());
}

}  // namespace

std::string KeptText::bytes_with(std::string_view other) const {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << first_line;
  out << "kind: " << kind_names.at(static_cast<std::size_t>(kind)) << '\n';
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
  const auto head = HeadLines::take(bytes, first_line);
  if (!head) return std::nullopt;
  const auto time = head->number<gint64>("time");
  const auto size = head->number<std::size_t>("size");
  const auto kind = kind_of(head->at("kind"));
  if (!kind || !time || *time < 0 || *time >= year_9999) return std::nullopt;
  if (size != bytes.size() + beyond) return std::nullopt;
  KeptText kept{.kind = *kind, .time = *time, .quit = head->at("quit") == "yes"};
  const auto& layout = head->at("layout");
  if (layout != "none") kept.layout = Glib::filename_from_uri(layout);
  kept.text = bytes;
  return kept;
} catch (const std::out_of_range&) {
  return std::nullopt;
} catch (const Glib::Error&) {
  return std::nullopt;
}

}  // namespace zemblar

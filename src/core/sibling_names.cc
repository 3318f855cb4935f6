#include "core/sibling_names.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace zemblar {
namespace {

constexpr std::string_view place_of_number = "%1";

/// The number that makes `name` out of `format`; none when it is no such name.
std::optional<unsigned> number_in(const std::string& name, const std::string& format) {
  const auto place = format.find(place_of_number);
  if (place == std::string::npos) return std::nullopt;
  const auto suffix = format.substr(place + place_of_number.size());
  if (name.size() <= place + suffix.size() || name.compare(0, place, format, 0, place) != 0 ||
      !name.ends_with(suffix)) {
    return std::nullopt;
  }
  unsigned number = 0;
  const auto* first = name.data() + place;
  const auto* last = name.data() + name.size() - suffix.size();
  const auto [end, error] = std::from_chars(first, last, number);
  if (error != std::errc() || end != last) return std::nullopt;
  return number;
}

}  // namespace

Object* SiblingNames::find(const Glib::ustring& name) const {
  const auto found = by_name_.find(name.raw());
  return found == by_name_.end() ? nullptr : found->second;
}

void SiblingNames::insert(const Glib::ustring& name, Object* child) {
  by_name_.emplace(name.raw(), child);
}

void SiblingNames::erase(const Glib::ustring& name, const Object* child) {
  const auto found = by_name_.find(name.raw());
  if (found == by_name_.end() || found->second != child) return;
  for (auto& [format, candidate] : first_candidate_) {
    if (const auto number = number_in(found->first, format)) {
      candidate = std::min(candidate, std::max(*number, 1u));
    }
  }
  by_name_.erase(found);
}

Glib::ustring SiblingNames::free_name(const Glib::ustring& format) {
  auto& n = first_candidate_.try_emplace(format.raw(), 1u).first->second;
  if (format.raw().find(place_of_number) == std::string::npos) return format;
  for (; n != 0; ++n) {
    auto name = Glib::ustring::compose(format, n);
    if (!find(name)) return name;
  }
  return format;
}

}  // namespace zemblar

#include "core/sibling_names.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>
#include <utility>

#include "core/object.h"

namespace zemblar {
namespace {

constexpr std::string_view place_of_number = "%1";
constexpr std::size_t fewest = 8;  // slots of a table

std::size_t hash_of(const Glib::ustring& name) {
  return std::hash<std::string>()(name.raw());
}

/// The number with which `format` gives `name`; no value when no number does.
std::optional<unsigned> number_in(const std::string& name, const std::string& format) {
  const auto place = format.find(place_of_number);
  if (place == std::string::npos) return std::nullopt;
  const auto suffix = std::string_view(format).substr(place + place_of_number.size());
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
  if (slots_.empty()) return nullptr;
  const auto hash = hash_of(name);
  for (auto at = home(hash); slots_[at].child; at = next(at)) {
    if (slots_[at].hash != hash) continue;
    if (slots_[at].child->get_name().raw() == name.raw()) return slots_[at].child;
  }
  return nullptr;
}

void SiblingNames::insert(const Glib::ustring& name, Object* child) {
  if (find(name)) return;
  if (2 * (taken_ + 1) > slots_.size()) grow();
  put({hash_of(name), child});
  ++taken_;
}

void SiblingNames::put(const Slot& slot) {
  auto at = home(slot.hash);
  while (slots_[at].child) at = next(at);
  slots_[at] = slot;
}

void SiblingNames::grow() {
  const auto former = std::exchange(slots_, std::vector<Slot>(std::max(2 * slots_.size(), fewest)));
  for (const auto& slot : former) {
    if (slot.child) put(slot);
  }
}

void SiblingNames::erase(const Glib::ustring& name, const Object* child) {
  if (slots_.empty()) return;
  const auto hash = hash_of(name);
  auto at = home(hash);
  while (slots_[at].child && (slots_[at].child != child || slots_[at].hash != hash)) at = next(at);
  if (!slots_[at].child) return;
  vacate(at);
  --taken_;
  for (auto& candidate : candidates_) {
    if (const auto number = number_in(name.raw(), candidate.format)) {
      candidate.number = std::min(candidate.number, std::max(*number, 1u));
    }
  }
}

// Fills the hole with following slots that a search, which ends at a free slot, would no longer
// find.
void SiblingNames::vacate(std::size_t hole) {
  for (auto at = next(hole); slots_[at].child; at = next(at)) {
    const auto from_home = home(at - slots_[at].hash);
    if (from_home < home(at - hole)) continue;
    slots_[hole] = slots_[at];
    hole = at;
  }
  slots_[hole] = {};
}

unsigned& SiblingNames::candidate(const Glib::ustring& format) {
  for (auto& known : candidates_) {
    if (known.format == format.raw()) return known.number;
  }
  return candidates_.emplace_back(Candidate{format.raw()}).number;
}

Glib::ustring SiblingNames::free_name(const Glib::ustring& format) {
  auto& n = candidate(format);
  if (format.raw().find(place_of_number) == std::string::npos) return format;
  for (; n != 0; ++n) {
    auto name = Glib::ustring::compose(format, n);
    if (!find(name)) return name;
  }
  return format;
}

}  // namespace zemblar

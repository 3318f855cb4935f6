#include "core/document_class.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <unordered_map>
#include <vector>

#include "core/private_form.h"

namespace zemblar {
namespace {

using Classes = std::unordered_map<std::string, DocumentClass>;
using Predicates = std::vector<bool (*)(const Object*)>;

Classes& classes() {
  static Classes by_tag;
  return by_tag;
}

Predicates& accepted(Section section) {
  static std::array<Predicates, section_count> by_section;
  return by_section[static_cast<std::size_t>(section)];
}

}  // namespace

DocumentClass::Registration::Registration(const DocumentClass& document_class) {
  const bool inserted = classes().emplace(document_class.tag, document_class).second;
  assert(inserted && "Tag Registered Twice");
}

const DocumentClass* find_document_class(const std::string& tag) {
  const auto found = classes().find(tag);
  if (found == classes().end()) return nullptr;
  return found->second.in_files || PrivateForm::is_used() ? &found->second : nullptr;
}

std::map<std::string, DocumentClass> document_classes() {
  return {classes().begin(), classes().end()};
}

ToplevelAccepts::ToplevelAccepts(Section section, bool (*is_instance)(const Object*)) {
  accepted(section).push_back(is_instance);
}

bool toplevel_accepts(Section section, const Object* object) {
  return std::ranges::any_of(accepted(section), [&](auto* is) { return is(object); });
}

}  // namespace zemblar

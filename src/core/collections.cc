#include "core/collections.h"

#include <array>

namespace zemblar {
namespace {

struct Rule {
  bool (*is_member)(const Object*);
  void (*relay)(Object& member, MemberSet& set);
};

std::vector<Rule>& rules(MemberKind kind) {
  static std::array<std::vector<Rule>, 2> by_kind;
  return by_kind[static_cast<std::size_t>(kind)];
}

}  // namespace

MemberSet::Membership::Membership(MemberKind kind, bool (*is_member)(const Object*),
                                  void (*relay)(Object& member, MemberSet& set)) {
  rules(kind).push_back({is_member, relay});
}

MemberSet::MemberSet(const char* name, MemberKind kind, sigc::signal<void, Object*>& object_added)
    : Glib::ObjectBase("MemberSet"), Object(name), kind_(kind) {
  object_added.connect(sigc::mem_fun(*this, &MemberSet::join));
}

void MemberSet::join(Object* object) {
  for (const auto& rule : rules(kind_)) {
    if (!rule.is_member(object) || !members_.insert(object).second) continue;
    rule.relay(*object, *this);
    object->signal_deleted().connect(sigc::track_obj(
        [this, object] {
          members_.erase(object);
          signal_changed_.emit();
        },
        *this));
  }
}

AllLoks::AllLoks() : Glib::ObjectBase("AllLoks"), Object("All Loks") {}

}  // namespace zemblar

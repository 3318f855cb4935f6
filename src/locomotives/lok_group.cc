#include "locomotives/lok_group.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/yaml_io.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

const auto accepted_by_locomotives = toplevel_accepts_class<LokGroup>(Section::locomotives);

const DocumentClass::Registration registration(private_class<LokGroup>("!lok-group",
                                                                       Section::locomotives));

}  // namespace

LokGroup::LokGroup() : Glib::ObjectBase("LokGroup"), Object(_("Locomotive Group %1")) {}

LokGroup::LokGroup(const YAML::Node& node) : LokGroup() {
  load_identity(node);
  const auto objects = node["objects"];
  if (!objects) return;
  for (const auto& entry : objects) add(load_member(entry));
}

Object* LokGroup::load_member(const YAML::Node& entry) {
  if (entry.Tag() == "!lok") return new Lok(entry);
  if (entry.Tag() == "!lok-group") return new LokGroup(entry);
  throw YAML::InvalidScalar(entry.Mark());
}

void LokGroup::save(YAML::Emitter& out) const {
  out << unwritable_tag("lok-group") << YAML::BeginMap;
  save_identity(out);
  if (!empty()) {
    out << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
    for (const auto* child : *this) out << *child;
    out << YAML::EndSeq;
  }
  out << YAML::EndMap;
}

void LokGroup::restore(const EntryChange& change) {
  Object::restore(change);
  if (!change.differs("objects")) return;
  const auto objects = change.below("objects");
  restore_children(
      *this, objects.former(), objects.entry(),
      [this](const YAML::Node& entry, unsigned place) { insert(load_member(entry), place); });
}

bool LokGroup::can_contain(Object* child) const {
  if (dynamic_cast<const Lok*>(child)) return true;
  if (!dynamic_cast<const LokGroup*>(child) || child == this) return false;
  const auto above = get_ancestors();
  return std::ranges::find(above, child) == above.end();
}

}  // namespace zemblar

#include "track/crossing.h"

#include <yaml-cpp/yaml.h>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/private_form.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Crossing>("!crossing",
                                                                        Section::blocks));
const auto accepted_by_blocks = toplevel_accepts_class<Crossing>(Section::blocks);

}  // namespace

Crossing::Crossing() : Glib::ObjectBase("Crossing"), Block(_("Crossing %1")), links(this) {}

Crossing::Crossing(const YAML::Node& node) : Crossing() {
  load_identity(node);
  load_input(node);
  if (PrivateForm::is_used()) load_invert(node);
  for (const auto* name : Corners::names) load_link(node, name, *links.find(name));
}

void Crossing::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("crossing") << YAML::BeginMap;
  save_identity(out);
  save_input(out);
  if (PrivateForm::is_used()) save_invert(out);
  for (std::size_t i = 0; i < Corners::names.size(); ++i) {
    save_link(out, Corners::names[i], *links.all()[i]);
  }
  out << YAML::EndMap;
}

void Crossing::restore(const EntryChange& change) {
  Block::restore(change);
  for (const auto* name : Corners::names) restore_link(change, name, *links.find(name));
}

BlockLink* Crossing::next_link(BlockLink* in) {
  if (in == &links.top_left) return &links.bottom_right;
  if (in == &links.bottom_right) return &links.top_left;
  if (in == &links.top_right) return &links.bottom_left;
  return in == &links.bottom_left ? &links.top_right : nullptr;
}

}  // namespace zemblar

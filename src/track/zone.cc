#include "track/zone.h"

#include <yaml-cpp/yaml.h>

#include "core/alive_guard.h"
#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/yaml_io.h"
#include "devices/device.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Zone>("!zone", Section::blocks));
const auto accepted_by_blocks = toplevel_accepts_class<Zone>(Section::blocks);

}  // namespace

Zone::Zone() : Glib::ObjectBase("Zone"), Block(_("Zone %1")), left(this), right(this) {}

Zone::Zone(const YAML::Node& node) : Zone() {
  load_identity(node);
  load_input(node);
  load_invert(node);
  load_link(node, "left", left);
  load_link(node, "right", right);
}

void Zone::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("zone") << YAML::BeginMap;
  save_identity(out);
  save_input(out);
  save_invert(out);
  save_link(out, "left", left);
  save_link(out, "right", right);
  out << YAML::EndMap;
}

void Zone::restore(const EntryChange& change) {
  Block::restore(change);
  restore_link(change, "left", left);
  restore_link(change, "right", right);
}

BlockLink* Zone::next_link(BlockLink* in) {
  if (in == &left) return &right;
  return in == &right ? &left : nullptr;
}

BlockLink* Zone::get_link(const std::string& name) {
  if (name == "left") return &left;
  return name == "right" ? &right : nullptr;
}

std::string Zone::get_link_name(const BlockLink* link) const {
  if (link == &left) return "left";
  return link == &right ? "right" : "";
}

void Zone::on_detected(Lok* lok) {
  // A handler of the signal may end the locomotive or this zone, or clear the detector.
  const AliveGuard lok_lives(*lok);
  const AliveGuard lives(*this);
  Block::on_detected(lok);
  if (!lok_lives || !lives || !get_input()) return;
  const auto orientation = get_input()->orientation();
  if (orientation > 2) return;
  const bool swapped = orientation != 0 && (orientation == 2) != get_invert();
  lok->detected(swapped ? &right : &left, swapped ? &left : &right, orientation != 0);
}

}  // namespace zemblar

#include <yaml-cpp/yaml.h>

#include <utility>

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "devices/device.h"
#include "track/block.h"

namespace zemblar {

void Block::load_invert(const YAML::Node& node) {
  read_key(node, "invert", invert_);
}

void Block::save_invert(YAML::Emitter& out) const {
  out << YAML::Key << "invert" << YAML::Value << invert_;
}

void Block::load_input(const YAML::Node& node) {
  read_key(node, "input", input_);
  if (std::exchange(awaits_attaching_, true)) return;
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        attach_saved();
        return true;
      },
      *this));
}

// A detector that is not in the document is not written.
void Block::save_input(YAML::Emitter& out) const {
  const bool in_document = input_ && of(g_node_get_root(input_->gnode())) == &Layout::get();
  out << YAML::Key << "input" << YAML::Value
      << static_cast<const Object*>(in_document ? input_ : nullptr);
}

void Block::load_link(const YAML::Node& node, const std::string& key, BlockLink& link) {
  const auto entry = node[key];
  if (!entry || entry.IsNull()) return;
  if (!entry.IsSequence() || entry.size() != 2) throw YAML::InvalidScalar(entry.Mark());
  auto& saved = saved_links_.emplace_back(SavedLink{&link, std::make_unique<Block*>(nullptr), {}});
  entry[0] >> *saved.partner;
  entry[1] >> saved.name;
}

void Block::save_link(YAML::Emitter& out, const std::string& key, const BlockLink& link) {
  out << YAML::Key << key << YAML::Value;
  const auto* partner = link.get_partner();
  if (!partner) {
    out << YAML::Null;
    return;
  }
  const auto* block = partner->get_block();
  out << YAML::Flow << YAML::BeginSeq << Layout::get().get_id(block)
      << block->get_link_name(partner) << YAML::EndSeq;
}

void Block::restore(const EntryChange& change) {
  Object::restore(change);
  change.read_reference<Device>("input", [this](auto* input) { set_input(input); });
  change.read<bool>("invert", [this](bool invert) { set_invert(invert); });
}

// A partner that has been joined to another link meanwhile stays joined to that.
void Block::restore_link(const EntryChange& change, const std::string& key, BlockLink& link) {
  if (!change.differs(key.c_str())) return;
  const auto entry = change.at(key.c_str());
  if (!entry || entry.IsNull()) return link.disconnect();
  auto* block = EntryChange::object_at<Block>(entry[0]);
  auto* partner = block ? block->get_link(entry[1].Scalar()) : nullptr;
  if (partner == link.get_partner()) return;
  link.disconnect();
  if (partner && !partner->is_connected()) link.connect(partner);
}

// The file has each join at both ends, so the second entry finds its link already joined.
void Block::attach_saved() {
  for (const auto& saved : std::exchange(saved_links_, {})) {
    if (!*saved.partner || saved.link->is_connected()) continue;
    auto* partner = (*saved.partner)->get_link(saved.name);
    if (partner && !partner->is_connected()) saved.link->connect(partner);
  }
  if (auto* input = std::exchange(input_, nullptr)) set_input(input);
}

}  // namespace zemblar

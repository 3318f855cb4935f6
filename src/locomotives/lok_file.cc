#include <yaml-cpp/yaml.h>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Lok>("!lok", Section::locomotives));
const auto accepted_by_locomotives = toplevel_accepts_class<Lok>(Section::locomotives);

constexpr auto attributes_key = "attributes";

/// The entries of the list under `key`; empty when the key is missing or null.
YAML::Node entries_of(const YAML::Node& node, const char* key) {
  const auto list = node[key];
  if (!list || list.IsNull()) return YAML::Node(YAML::NodeType::Sequence);
  if (!list.IsSequence()) throw YAML::InvalidScalar(list.Mark());
  return list;
}

Lok::Attributes read_attributes(const YAML::Node& node) {
  Lok::Attributes attributes;
  for (const auto& entry : entries_of(node, attributes_key)) {
    if (!entry.IsSequence() || entry.size() != 2) throw YAML::InvalidScalar(entry.Mark());
    attributes[scalar_of(entry[0])] = scalar_of(entry[1]);
  }
  return attributes;
}

}  // namespace

Lok::Lok(const YAML::Node& node) : Lok(NoDecoder{}) {
  load_identity(node);
  read_key(node, "top-speed", top_speed_);
  for (const auto& entry : entries_of(node, "decoders")) adopt(Decoder::create(entry));
  if (decoders_.empty()) adopt(Decoder::create());
  for (const auto& entry : entries_of(node, "functions")) add(new Function(this, entry));
  if (PrivateForm::is_used()) set_attributes(read_attributes(node));
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        for (const auto& decoder : decoders_) decoder->follow_device();
        registry_.update(decoders_);
        return true;
      },
      *this));
}

void Lok::restore(const EntryChange& change) {
  Object::restore(change);
  change.read<int>("top-speed", [this](int speed) { set_top_speed(speed); });
  if (change.differs("decoders")) restore_decoders(change.at("decoders"));
  if (change.differs(attributes_key)) set_attributes(read_attributes(change.entry()));
  if (!change.differs("functions")) return;
  const auto functions = change.below("functions");
  restore_children(*this, functions.former(), functions.entry(),
                   [this](const YAML::Node& entry, unsigned place) {
                     insert(new Function(this, entry), place);
                   });
}

void Lok::restore_decoders(const YAML::Node& entries) {
  while (decoders_.size() > entries.size()) {
    remove_decoder(static_cast<unsigned>(decoders_.size()) - 1);
  }
  while (decoders_.size() < entries.size()) add_decoder();
  for (std::size_t i = 0; i < decoders_.size(); ++i) {
    const auto held = decoders_[i];
    held->restore(entries[i]);
  }
}

void Lok::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("lok") << YAML::BeginMap;
  save_identity(out);
  out << YAML::Key << "top-speed" << YAML::Value << top_speed_;
  out << YAML::Key << "decoders" << YAML::Value << YAML::BeginSeq;
  for (const auto& decoder : decoders_) decoder->save(out);
  out << YAML::EndSeq;
  out << YAML::Key << "functions" << YAML::Value << YAML::BeginSeq;
  for (const auto* child : *this) out << *child;
  out << YAML::EndSeq;
  if (PrivateForm::is_used()) save_attributes(out);
  out << YAML::EndMap;
}

// A list of pairs, since an attribute's key may be longer than a key of a YAML mapping can be.
void Lok::save_attributes(YAML::Emitter& out) const {
  out << YAML::Key << attributes_key << YAML::Value << YAML::BeginSeq;
  for (const auto& [key, value] : attributes_) {
    out << YAML::Flow << YAML::BeginSeq << key << value << YAML::EndSeq;
  }
  out << YAML::EndSeq;
}

void Lok::set_attributes(const Attributes& wanted) {
  const auto former = attributes_;
  for (const auto& [key, value] : former) {
    if (!wanted.contains(key)) remove_attribute(key);
  }
  for (const auto& [key, value] : wanted) set_attribute(key, value);
}

}  // namespace zemblar

#include "core/node_builder.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/i18n.h"

namespace zemblar {
namespace {

[[noreturn]] void refuse(const YAML::Mark& mark, const char* why) {
  throw YAML::RepresentationException(mark, why);
}

}  // namespace

void NodeBuilder::Extent::add(const Extent& child) {
  nodes += child.nodes;
  height = std::max(height, child.height + 1);
}

NodeBuilder::RawNode& NodeBuilder::make(const YAML::Mark& mark) {
  if (open_.size() >= max_depth) refuse(mark, _("Entries are nested too deeply."));
  auto& node = memory_->create_node();
  node.set_mark(mark);
  return node;
}

void NodeBuilder::add_null(const YAML::Mark& mark, YAML::anchor_t anchor) {
  auto& node = make(mark);
  node.set_null();
  finish(node, anchor, {});
}

void NodeBuilder::add_scalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                             const std::string& value) {
  auto& node = make(mark);
  node.set_scalar(value);
  node.set_tag(tag);
  finish(node, anchor, {});
}

void NodeBuilder::add_alias(const YAML::Mark& mark, YAML::anchor_t anchor) {
  if (anchor >= anchored_.size() || !anchored_[anchor].node) {
    refuse(mark, _("An entry contains itself."));
  }
  const auto [node, extent] = anchored_[anchor];
  if (open_.size() + extent.height > max_depth) refuse(mark, _("Entries are nested too deeply."));
  unfolded_ += extent.nodes;
  if (unfolded_ > most_unfolded_) {
    refuse(mark, _("Its aliases stand for more than a file of this size can hold."));
  }
  place(*node, extent);
}

void NodeBuilder::start(YAML::NodeType::value type, const YAML::Mark& mark, const std::string& tag,
                        YAML::anchor_t anchor) {
  auto& node = make(mark);
  node.set_type(type);
  node.set_tag(tag);
  open_.push_back({&node, nullptr, anchor, {}});
}

void NodeBuilder::end() {
  assert(!open_.empty());
  const auto ended = open_.back();
  open_.pop_back();
  finish(*ended.node, ended.anchor, ended.extent);
}

void NodeBuilder::finish(RawNode& node, YAML::anchor_t anchor, const Extent& extent) {
  if (anchor != YAML::NullAnchor) remember(node, anchor, extent);
  place(node, extent);
}

void NodeBuilder::remember(RawNode& node, YAML::anchor_t anchor, const Extent& extent) {
  if (anchor >= anchored_.size()) anchored_.resize(anchor + 1);
  anchored_[anchor] = {&node, extent};
  if (kept_.empty() || kept_.back() != memory_) kept_.push_back(memory_);
}

/// Adds the node to the innermost open collection; without one, the node is the complete one.
void NodeBuilder::place(RawNode& node, const Extent& extent) {
  if (open_.empty()) {
    complete_ = &node;
    return;
  }
  auto& parent = open_.back();
  parent.extent.add(extent);
  if (parent.node->type() == YAML::NodeType::Sequence) {
    parent.node->push_back(node, memory_);
  } else if (!parent.key) {
    parent.key = &node;
  } else {
    parent.node->insert(*std::exchange(parent.key, nullptr), node, memory_);
  }
}

// A library iterator is the only public way to make a YAML::Node from a raw node and its memory.
YAML::Node NodeBuilder::take() {
  std::vector<RawNode*> one{std::exchange(complete_, nullptr)};
  const auto memory = std::exchange(memory_, std::make_shared<YAML::detail::memory_holder>());
  return *YAML::iterator(YAML::detail::node_iterator(one.begin()), memory);
}

}  // namespace zemblar

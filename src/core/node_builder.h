#pragma once

#include <yaml-cpp/anchor.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace zemblar {

/// Builds YAML nodes, one after another, from the events of a parser, with limits that no honest
/// document exceeds.
///
/// A node is complete when all nodes below it have ended. `take` returns the complete node; the
/// next event starts another one. Nodes with an anchor live as long as the builder, because aliases
/// that follow may name them.
///
/// An alias stands for all nodes below its anchor, and each alias counts them again. The aliases
/// together must not stand for more nodes than the document has bytes (or `least_allowance` if that
/// is more), and no node may be deeper than `max_depth`. A node must not contain itself. A
/// violation throws YAML::RepresentationException with the place in the document.
class NodeBuilder {
 public:
  static constexpr std::size_t max_depth = 400;
  static constexpr std::size_t least_allowance = 10'000;

  explicit NodeBuilder(std::size_t document_size)
      : most_unfolded_(std::max(document_size, least_allowance)) {}

  void add_null(const YAML::Mark& mark, YAML::anchor_t anchor);
  void add_scalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  const std::string& value);
  void add_alias(const YAML::Mark& mark, YAML::anchor_t anchor);
  void start(YAML::NodeType::value type, const YAML::Mark& mark, const std::string& tag,
             YAML::anchor_t anchor);
  void end();

  /// True while a started node is incomplete.
  [[nodiscard]] bool is_inside() const { return !open_.empty(); }
  [[nodiscard]] bool is_complete() const { return complete_ != nullptr; }
  /// Returns the complete node and forgets it.
  [[nodiscard]] YAML::Node take();

 private:
  using RawNode = YAML::detail::node;
  using Memory = YAML::detail::shared_memory_holder;

  /// A node with all below it.
  struct Extent {
    std::size_t nodes = 1;
    std::size_t height = 1;

    void add(const Extent& child);
  };
  struct Open {
    RawNode* node;
    RawNode* key;  // in a map, a key that waits for its value; else null
    YAML::anchor_t anchor;
    Extent extent;
  };
  /// A null node means that the node of the anchor is incomplete.
  struct Anchored {
    RawNode* node = nullptr;
    Extent extent{};
  };

  RawNode& make(const YAML::Mark& mark);
  void finish(RawNode& node, YAML::anchor_t anchor, const Extent& extent);
  void place(RawNode& node, const Extent& extent);
  void remember(RawNode& node, YAML::anchor_t anchor, const Extent& extent);

  std::size_t most_unfolded_;
  std::size_t unfolded_ = 0;
  std::vector<Open> open_;
  std::vector<Anchored> anchored_;  // indexed by anchor
  Memory memory_ = std::make_shared<YAML::detail::memory_holder>();
  std::vector<Memory> kept_;  // owns the anchored nodes
  RawNode* complete_ = nullptr;
};

}  // namespace zemblar

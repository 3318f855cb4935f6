#pragma once

#include <yaml-cpp/anchor.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace zemblar {

/// Builds one node after another from the events of a YAML parser, within what an honest document
/// can hold.
///
/// A node is complete when everything below it has ended; `take` hands it out, and the next event
/// starts another one. Nodes with an anchor stay alive as long as the builder, because nodes that
/// follow may name them.
///
/// An alias stands for all nodes below its anchor. Their number and their depth count as often as
/// they are named: the nodes that all aliases stand for must not be more than the bytes of the
/// document, or `least_allowance` in a small one, and no node may stand deeper than `max_depth`. A
/// node that contains itself is refused. Each refusal is a YAML::RepresentationException at the
/// place in the document.
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

  /// Whether a node has been started that is not complete.
  [[nodiscard]] bool is_inside() const { return !open_.empty(); }
  [[nodiscard]] bool is_complete() const { return complete_ != nullptr; }
  /// The complete node, once.
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
    RawNode* key;  // of a map: it waits for its value
    YAML::anchor_t anchor;
    Extent extent;
  };
  /// An anchor without a node belongs to a node that is not complete.
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
  std::vector<Anchored> anchored_;  // by anchor
  Memory memory_ = std::make_shared<YAML::detail::memory_holder>();
  std::vector<Memory> kept_;  // of the anchored nodes
  RawNode* complete_ = nullptr;
};

}  // namespace zemblar

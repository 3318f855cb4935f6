#pragma once

#include "diagram/view_node.h"
#include "runtime/scoped_connection.h"
#include "track/block_link.h"

namespace zemblar {

class View;

/// A node at an end of a track. It represents a link of the block that the object shows, and can be
/// joined to a node of another object. In a diagram, only joining two such nodes joins their
/// blocks.
///
/// A join belongs to the block graph: when the links are disconnected, for any reason, the nodes
/// are too. In a layout file the key `link` names the partner: the index of its object in the view,
/// and the name of its link. Both nodes write it. If the partner is missing, the end stays open.
class ViewLinkNode : public ViewNode {
 public:
  /// The tag by which the editor recognises nodes that can be joined.
  struct Tag : ViewNode::Tag {
    using ViewNode::Tag::Tag;
  };
  /// The end of the track that the node is at. The directions of two joined ends of the same type
  /// are opposite.
  enum Type {
    unset = 0,
    inward = 1,   ///< the direction points into its object: left of a zone, common of a point
    outward = 2,  ///< the direction points out of it: right of a zone, a state of a point
  };

  ~ViewLinkNode() override;

  void refresh() override;
  void drag(Part part, const Vector& position) override;
  [[nodiscard]] Vector get_path_direction() const override;
  void set_locked(bool on) override;
  [[nodiscard]] Gtk::MenuItem* get_menu_item() override;

  /// Call once. A second call with another value throws std::logic_error "ViewLinkNode::set_type()
  /// called twice".
  void set_type(Type type);
  /// Call once. A second call throws std::logic_error "ViewLinkNode::set_block_link() called
  /// twice".
  void set_block_link(BlockLink* link);
  [[nodiscard]] BlockLink* get_block_link() const { return block_link_; }
  /// The node that is joined to this one, or null.
  [[nodiscard]] ViewLinkNode* get_link() const { return link_; }

  /// Joins the two nodes and their blocks, and moves this node onto the other. Does nothing when
  /// either is joined to a third.
  void connect(ViewLinkNode& other);
  /// Disconnects the two nodes; the blocks stay joined.
  void disconnect();
  /// True if the two nodes can be joined.
  [[nodiscard]] bool can_connect(const ViewLinkNode& other) const;

  void load(const YAML::Node& node) override;

 protected:
  void turn(const Vector& direction) override;
  [[nodiscard]] std::shared_ptr<const ViewTag> make_tag(Part part) override;
  [[nodiscard]] bool is_joined() const override;
  void save_more(YAML::Emitter& out) const override;

 private:
  void join(ViewLinkNode& other);
  bool connect_to(int object_index, const std::string& link_name);
  void on_block_link_changed();
  [[nodiscard]] bool is_free_for(const ViewLinkNode& other) const;
  void take_direction_of_link();
  void redraw() const;

  BlockLink* block_link_ = nullptr;
  ViewLinkNode* link_ = nullptr;
  Type type_ = unset;
  ScopedConnection block_link_changed_;
};

}  // namespace zemblar

#pragma once

#include "diagram/view_node.h"
#include "runtime/scoped_connection.h"
#include "track/block_link.h"

namespace zemblar {

class View;

/// A node where a track ends: it stands for a link of the block that the object shows, and can be
/// joined to a node of another object. Joining two of them joins their blocks; nothing else does.
///
/// A join belongs to the block graph: when the links come apart, by whatever cause, the nodes do
/// too. In a layout file the key `link` names the partner: the place of its object in the view, and
/// the name of its link. Both sides write it; one that cannot be found leaves the end open.
class ViewLinkNode : public ViewNode {
 public:
  /// The editor knows joinable nodes by it.
  struct Tag : ViewNode::Tag {
    using ViewNode::Tag::Tag;
  };
  /// Which end of its track this is. Joined ends of one kind face each other.
  enum Type {
    unset = 0,
    inward = 1,   ///< the direction points into its object: left of a zone, common of a point
    outward = 2,  ///< it points out of it: right of a zone, a state of a point
  };

  ~ViewLinkNode() override;

  void refresh() override;
  void drag(Part part, const Vector& position) override;
  [[nodiscard]] Vector get_path_direction() const override;
  void set_locked(bool on) override;
  [[nodiscard]] Gtk::MenuItem* get_menu_item() override;

  /// Once, but for the same value again. Throws std::logic_error
  /// "ViewLinkNode::set_type() called twice".
  void set_type(Type type);
  /// Once. Throws std::logic_error "ViewLinkNode::set_block_link() called twice".
  void set_block_link(BlockLink* link);
  [[nodiscard]] BlockLink* get_block_link() const { return block_link_; }
  /// The node that is joined to this one; null without any.
  [[nodiscard]] ViewLinkNode* get_link() const { return link_; }

  /// Joins the two, and their blocks, and moves this one onto the other. Does nothing when either
  /// is joined elsewhere.
  void connect(ViewLinkNode& other);
  /// Takes the nodes apart; the blocks stay joined.
  void disconnect();
  /// Whether the two could be joined.
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

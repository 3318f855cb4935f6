#pragma once

#include <glib.h>
#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>
#include <glibmm/refptr.h>
#include <glibmm/ustring.h>
#include <sigc++/signal.h>

#include <memory>
#include <vector>

#include "core/object_iter.h"

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML
namespace Gtk {
class SizeGroup;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// The text with a space in the place of each control character.
[[nodiscard]] Glib::ustring without_control_characters(const Glib::ustring& text);

class EntryChange;
class SiblingNames;

/// A named node in the one tree whose root is the Layout.
///
/// Everything in a layout is an Object. A concrete class constructs `Glib::ObjectBase` with its own
/// class name, so that it has its own toolkit type and property table. Objects are made with `new`
/// and passed to `add`. Parents own their children. `destroy()` is the only way to end an object
/// that has been added; code that keeps a pointer to an object connects to `signal_deleted`.
///
/// Names are unique among siblings. They hold no control characters, since a layout file could
/// not carry them; such characters become blanks. `add` and `destroy` never suspend a fiber.
class Object : public Glib::Object {
 public:
  ~Object() override;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  /// Appends `child` and returns it. An empty or taken name is replaced by the child's default
  /// name with the lowest free number. When this object is reachable from the current layout,
  /// the child and then each of its descendants is announced on layout and parent.
  template <typename T>
  T* add(T* child) {
    attach(child);
    return child;
  }

  /// The same at a position among the children, from 0; at the end when there are fewer children.
  template <typename T>
  T* insert(T* child, unsigned position) {
    attach(child, static_cast<int>(position));
    return child;
  }

  /// Moves the object, with its descendants, to a position among the children of `parent`, which
  /// may be the present parent but no descendant. The object stays the same: pointers and
  /// connections to it remain valid. `position` is that after the move, from 0; a larger one means
  /// the end. A name that a sibling has there is replaced as in `add`.
  void move_to(Object& parent, unsigned position);
  /// True if the user may move the object there: both its present parent and `parent` accept such
  /// objects.
  [[nodiscard]] bool can_move_to(const Object& parent);

  /// Ends the object and all below it. A second call from a handler of the first does nothing.
  void destroy();
  void destroy_children();
  [[nodiscard]] bool is_deleting() const { return deleting_; }

  [[nodiscard]] const Glib::ustring& get_name() const { return name_; }
  /// An empty name, the present one, or one that a sibling has is ignored silently.
  void set_name(const Glib::ustring& name);

  [[nodiscard]] Object* get_parent() const;
  /// The ancestors, from the parent up to the root.
  [[nodiscard]] std::vector<Object*> get_ancestors() const;
  [[nodiscard]] Object* child_at(unsigned n) const;
  /// Place among the siblings, from 0; -1 for a root.
  [[nodiscard]] int get_position() const;
  [[nodiscard]] unsigned child_count() const;
  [[nodiscard]] bool empty() const { return node_.gnode->children == nullptr; }
  [[nodiscard]] ObjectIter begin() const { return {node_.gnode, node_.gnode->children}; }
  [[nodiscard]] ObjectIter end() const { return {node_.gnode, nullptr}; }
  /// The child of that name, or null; in constant time.
  [[nodiscard]] Object* find_child(const Glib::ustring& name) const;

  /// Call before changing anything that is saved in the object's entry; undo and recovery depend on
  /// it.
  void before_change();

  /// True if `child` may be dropped on this object in an object list.
  [[nodiscard]] virtual bool can_contain(Object* child) const;
  [[nodiscard]] virtual bool get_deletable() const { return true; }
  /// True if a layout file holds the object's name.
  [[nodiscard]] virtual bool keeps_name() const { return true; }
  /// Writes the object as an entry of a layout file. Fails an assertion unless overridden.
  virtual void save(YAML::Emitter& out) const;
  /// Writes part `part` of the entry, from 0; true if another part follows. Splits the work for
  /// entries that take long. The parts of one entry are written in order, with nothing in between.
  virtual bool save_part(YAML::Emitter& out, unsigned part) const;
  /// Applies the values that differ in the later entry, as if the user had set them; all others
  /// stay. The objects that the entry refers to must exist.
  virtual void restore(const EntryChange& change);
  /// A new panel for this object, or null; the caller owns it. See core/panel_factory.h.
  virtual Gtk::Widget* make_panel(const Glib::RefPtr<Gtk::SizeGroup>& labels);
  /// The panel of the object's properties, labels in one size group; null when there is none.
  virtual Gtk::Widget* make_properties_panel(const Glib::RefPtr<Gtk::SizeGroup>& labels);

  /// Builds the object that a tagged entry of a layout file describes and puts it under its
  /// toplevel of the current layout. Throws YAML::RepresentationException for an unknown tag.
  static Object* create(const YAML::Node& node);

  Glib::PropertyProxy<Glib::ustring> property_name() { return {this, "name"}; }
  Glib::PropertyProxy_ReadOnly<bool> property_deletable() { return {this, "deletable"}; }

  sigc::signal<void>& signal_deleted() { return signal_deleted_; }
  sigc::signal<void, Object*>& signal_child_added() { return signal_child_added_; }
  sigc::signal<void, Object*>& signal_child_removed() { return signal_child_removed_; }
  /// Emitted on the new parent after a move. A move emits neither of the two signals above.
  sigc::signal<void, Object*>& signal_child_moved() { return signal_child_moved_; }

  // For ObjectIter.
  [[nodiscard]] GNode* gnode() const { return node_.gnode; }
  static Object* of(const GNode* node);

 protected:
  /// `name_format` is the pattern of default names, such as "Zone %1".
  explicit Object(const Glib::ustring& name_format);

  /// Reads the keys `name` and `id` of an entry; each is optional.
  void load_identity(const YAML::Node& node);
  /// Writes the keys `name` and `id`.
  void save_identity(YAML::Emitter& out) const;
  /// Changes the name without notification.
  void replace_name(const Glib::ustring& name) { name_ = name; }

  virtual void on_name_changed() {}
  virtual void on_deleted() {}
  virtual void on_deleting() {}
  virtual void on_child_added(Object* /*child*/) {}
  virtual void on_child_removing(Object* /*child*/) {}

 private:
  void attach(Object* child, int position = -1);
  void link(Object* child, int position);
  void announce(Object* child);
  void announce_tree(Object* child);
  void leave_parent();
  void find_free_name(Object* child);
  SiblingNames& names();

  struct Node {
    GNode* gnode;
    Object* object;
  };

  bool deleting_ = false;
  Glib::ustring name_format_;
  Glib::ustring name_;
  Node node_;
  GNode* last_child_ = nullptr;  // cached, since the toolkit walks the whole chain to append
  std::unique_ptr<SiblingNames> names_;

  sigc::signal<void> signal_deleted_;
  sigc::signal<void, Object*> signal_child_added_;
  sigc::signal<void, Object*> signal_child_removed_;
  sigc::signal<void, Object*> signal_child_moved_;
};

}  // namespace zemblar

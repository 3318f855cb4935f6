#pragma once

#include <gtkmm/treestore.h>

#include <array>
#include <deque>
#include <functional>
#include <unordered_map>
#include <unordered_set>

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// The rows of an ObjectList: all objects below a root, or those that a filter lets through with
/// what they stand in.
///
/// Without a filter the children of a container that holds many come a few thousandths of a second
/// at a time, when the main loop is idle. Rows stand in the order of the document; a row's object
/// is null while it is being taken out.
class ObjectRows : public Gtk::TreeStore {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns() {
      add(icon);
      add(name);
      add(object);
    }
    Gtk::TreeModelColumn<Glib::ustring> icon;
    Gtk::TreeModelColumn<Glib::ustring> name;
    Gtk::TreeModelColumn<Object*> object;
  };
  /// With more children than that, a container is filled bit by bit when there is no filter.
  static constexpr unsigned few = 12;

  static Glib::RefPtr<ObjectRows> create();
  static const Columns& columns();

  /// Starts anew; no view may show the rows meanwhile, which is much quicker. `text` is looked for
  /// in the names, in any case; empty for all objects. The root is always there, and so is `kept`.
  void fill(Object& root, const Glib::ustring& text, const Object* kept = nullptr);
  [[nodiscard]] bool is_filtered() const { return !text_.empty(); }
  /// Whether the text is in any name; so it is when it is empty.
  [[nodiscard]] bool finds_any() const { return text_.empty() || first_hit(); }
  /// The one whose own name is the text, or else begins with it, or else has it: the first such in
  /// the document, a container of kinds after all others. Null for none.
  [[nodiscard]] Object* first_hit() const;

  /// Null when the object has no row, or none yet.
  [[nodiscard]] Gtk::TreeIter row_of(const Object& object) const;
  /// The same with a row for each object that the filter lets through.
  Gtk::TreeIter make_row_of(Object& object);
  [[nodiscard]] Object* object_at(const Gtk::TreePath& path) const;

  /// What has happened to the document. The results of the first two say whether the filter may let
  /// through others now.
  bool add(Object& object);
  bool refresh(const Object& object);
  void remove(const Object& object);
  void move(Object& object);

  /// Asked while a row is dragged: `parent` may get the object before `next`, null for the end.
  std::function<bool(Object& object, Object& parent)> may_drop;
  std::function<void(Object& object, Object& parent, const Object* next)> drop;

 protected:
  ObjectRows();
  bool row_draggable_vfunc(const Gtk::TreePath& path) const override;
  bool row_drop_possible_vfunc(const Gtk::TreePath& at,
                               const Gtk::SelectionData& data) const override;
  bool drag_data_received_vfunc(const Gtk::TreePath& at, const Gtk::SelectionData& data) override;
  bool drag_data_delete_vfunc(const Gtk::TreePath& path) override;

 private:
  struct Row {
    Gtk::TreeIter iter;
    std::array<ScopedConnection, 2> service{};  // of a device: active, and its power
  };
  /// Where a row is dropped.
  struct Place {
    Object* object = nullptr;
    Object* parent = nullptr;
    const Object* next = nullptr;
  };

  [[nodiscard]] bool has_text(const Object& object) const;
  void find_best(Object& object, Object*& best, int& least) const;
  [[nodiscard]] int rank_of(const Object& object) const;
  bool find_hits(const Object& object, const Object* kept);
  [[nodiscard]] bool lets_through(const Object& object) const {
    return text_.empty() || hits_.contains(&object);
  }
  void insert(Object& object);
  Gtk::TreeIter insert_row(Object& object);
  void set_row(Object& object, const Gtk::TreeIter& row);
  void forget(const Object& object);
  bool fill_slice();
  /// False when the time was over before all children had their rows.
  template <typename IsOver>
  bool fill_children(Object& container, const IsOver& is_over);
  [[nodiscard]] Place place_of(const Gtk::TreePath& at, const Gtk::SelectionData& data) const;

  Object* root_ = nullptr;
  std::string text_;  // case-folded
  std::unordered_set<const Object*> hits_;
  std::unordered_map<const Object*, Row> rows_;
  std::deque<Object*> unfilled_;
  ScopedConnection filling_;
};

}  // namespace zemblar

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

/// The rows of an ObjectList: all objects below a root, or those that match a filter, with their
/// ancestors.
///
/// Without a filter the children of a large container are added in slices of a few milliseconds,
/// when the main loop is idle. Rows are in the order of the document. The object of a row is null
/// while the row is being removed.
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
  /// Largest number of children that are added at once when there is no filter.
  static constexpr unsigned few = 12;

  static Glib::RefPtr<ObjectRows> create();
  static const Columns& columns();

  /// Makes all rows anew. No view may show the rows meanwhile, which would be much slower. `text`
  /// is searched in the names, ignoring case; an empty text matches all objects. The root and
  /// `kept` always have a row.
  void fill(Object& root, const Glib::ustring& text, const Object* kept = nullptr);
  [[nodiscard]] bool is_filtered() const { return !text_.empty(); }
  /// True if any name contains the text, or the text is empty.
  [[nodiscard]] bool finds_any() const { return text_.empty() || first_hit(); }
  /// The best match: an object whose name equals the text, else begins with it, else contains it.
  /// Among equals the first in the document; toplevels and the root come last. Null without a
  /// match.
  [[nodiscard]] Object* first_hit() const;

  /// The row of an object; invalid if it has none, or none yet.
  [[nodiscard]] Gtk::TreeIter row_of(const Object& object) const;
  /// The same, but makes the row first if the object matches the filter and has no row yet.
  Gtk::TreeIter make_row_of(Object& object);
  [[nodiscard]] Object* object_at(const Gtk::TreePath& path) const;

  /// Call these after a change in the document. `add` and `refresh` return true if the set of
  /// objects that match the filter may have changed.
  bool add(Object& object);
  bool refresh(const Object& object);
  void remove(const Object& object);
  void move(Object& object);

  /// True while a name is being edited: a row that is written would end that. Changes of a lamp
  /// wait meanwhile.
  std::function<bool()> is_editing;
  /// Callbacks for dragging a row. `may_drop` tells whether `parent` accepts the object; `drop`
  /// moves it to `parent` before `next`, or to the end for null.
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
    std::array<ScopedConnection, 2>
        service{};  // for a device: property "active", and its track power; for a script: runs
  };
  /// The place where a row is dropped.
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
  void refresh_soon(const Object& object);
  bool fill_slice();
  /// False if `is_over` became true before all children had rows.
  template <typename IsOver>
  bool fill_children(Object& container, const IsOver& is_over);
  [[nodiscard]] Place place_of(const Gtk::TreePath& at, const Gtk::SelectionData& data) const;

  Object* root_ = nullptr;
  std::string text_;  // case-folded
  std::unordered_set<const Object*> hits_;
  std::unordered_map<const Object*, Row> rows_;
  std::deque<Object*> unfilled_;
  ScopedConnection filling_;
  std::unordered_set<const Object*> changed_;  // scripts whose lamp may have changed
  ScopedConnection refreshing_;
};

}  // namespace zemblar

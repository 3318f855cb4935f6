#pragma once

#include <gtkmm/cellrenderertext.h>
#include <gtkmm/menu.h>
#include <gtkmm/treeview.h>

#include "ui/toolkit/layout_follower.h"
#include "ui/windows/object_rows.h"

namespace zemblar {

/// The tree of all objects of the current layout; its first row is the layout itself.
///
/// Rows are in the order of the document and kept up to date. F2 renames in place, Delete deletes,
/// Alt+Up and Alt+Down move an object among its siblings. The context menu offers the same, and
/// moving the object to another container. Rows can be dragged to any container that accepts their
/// objects. A row with many children starts folded, and its children are added while the main loop
/// is idle.
class ObjectList : public Gtk::TreeView {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  ObjectList();
  ~ObjectList() override;

  /// The object of the selected row, or null.
  [[nodiscard]] Object* selected() const;
  void select(Object& object);
  /// Shows only the objects whose names contain the text, ignoring case, and their ancestors. An
  /// empty text shows all.
  void set_filter(const Glib::ustring& text);
  /// True if any name contains the filter text.
  [[nodiscard]] bool finds_any() const { return rows_->finds_any(); }
  /// Selects the best match of the filter, else keeps the selection or selects the first row, and
  /// takes the focus.
  void enter();
  /// Another object, or none (null), is selected. Also emitted before the selected object ends.
  sigc::signal<void, Object*>& signal_selected() { return signal_selected_; }

 private:
  void build_column();
  void build_menu();

  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void refill(bool keep_selected = false);
  void refill_later();
  void unfold_to(Gtk::TreePath path);
  void unfold_all();
  void unfold_small_ones();
  void on_added(Object& object);
  void on_made(Object& object);
  void on_moved(Object& object);

  bool on_key_press_event(GdkEventKey* event) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_drag_drop(const Glib::RefPtr<Gdk::DragContext>& context, int x, int y,
                    guint time) override;
  void pop_up(unsigned button, guint32 time);
  void announce();
  void start_rename();
  void rename(const Glib::ustring& path, const Glib::ustring& text);
  void delete_selected();
  void delete_now(Object& object);
  Object* neighbour(Object& object);

  void move_selected(bool down);
  void put(Object& object, Object& parent, unsigned place);
  void drop(Object& object, Object& parent, const Object* next);
  void offer_containers(Gtk::Menu& menu, Object& object, Object& below);
  [[nodiscard]] static bool renamable(const Object& object);

  Glib::RefPtr<ObjectRows> rows_{ObjectRows::create()};
  Gtk::TreeViewColumn column_;
  Gtk::CellRendererText name_cell_;
  Gtk::Menu menu_;
  Gtk::MenuItem* rename_item_ = nullptr;
  Gtk::MenuItem* delete_item_ = nullptr;
  Gtk::MenuItem* up_item_ = nullptr;
  Gtk::MenuItem* down_item_ = nullptr;
  Gtk::MenuItem* move_item_ = nullptr;
  const Object* dropped_on_ = nullptr;  // only for comparison; null if dropped between two rows
  Glib::ustring filter_;
  bool unfolding_all_ = false;
  bool refilling_ = false;  // suppresses `signal_selected`
  Object* announced_ = nullptr;
  const Layout* announced_layout_ = nullptr;  // only for comparison
  sigc::signal<void, Object*> signal_selected_;
  ScopedConnection selection_changed_;
  ScopedConnection refill_later_;
  ScopedConnection made_;
  std::unique_ptr<LayoutFollower> follower_;
};

}  // namespace zemblar

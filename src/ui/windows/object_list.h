#pragma once

#include <gtkmm/cellrenderertext.h>
#include <gtkmm/menu.h>
#include <gtkmm/treeview.h>

#include "ui/toolkit/layout_follower.h"
#include "ui/windows/object_rows.h"

namespace zemblar {

/// The tree of all objects of the current layout; its first row is the layout itself.
///
/// Rows stand in the order of the document and follow it. F2 renames in place, Delete deletes,
/// Alt+Up and Alt+Down move among the siblings; the context menu offers all that, and to move the
/// object to another container. Rows can be dragged to wherever their objects may be. A row with
/// many children starts folded, and is filled while nothing else is to be done.
class ObjectList : public Gtk::TreeView {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  ObjectList();
  ~ObjectList() override;

  /// Null when no row is selected.
  [[nodiscard]] Object* selected() const;
  void select(Object& object);
  /// Shows only the objects whose names have the text, in any case, and what they stand in; all for
  /// an empty text.
  void set_filter(const Glib::ustring& text);
  /// Whether any name has that text.
  [[nodiscard]] bool finds_any() const { return rows_->finds_any(); }
  /// Selects the first object that the filter asks for, else the first row, and takes the focus.
  void enter();
  /// Another object, or none, is selected now. Emitted before a selected object ends.
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
  const Object* dropped_on_ = nullptr;  // only compared; null between two rows
  Glib::ustring filter_;
  bool unfolding_all_ = false;
  bool refilling_ = false;  // what is selected is not to be told
  Object* announced_ = nullptr;
  const Layout* announced_layout_ = nullptr;  // only compared
  sigc::signal<void, Object*> signal_selected_;
  ScopedConnection selection_changed_;
  ScopedConnection refill_later_;
  ScopedConnection made_;
  std::unique_ptr<LayoutFollower> follower_;
};

}  // namespace zemblar

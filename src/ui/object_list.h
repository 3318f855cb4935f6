#pragma once

#include <gtkmm/cellrenderertext.h>
#include <gtkmm/menu.h>
#include <gtkmm/treestore.h>
#include <gtkmm/treeview.h>

#include <unordered_map>

#include "ui/layout_follower.h"

namespace zemblar {

/// The tree of all objects of the current layout; its first row is the layout itself.
///
/// Rows stand in the order of the document and follow it. F2 renames in place, Delete deletes, the
/// context menu offers both. A row with many children starts folded.
class ObjectList : public Gtk::TreeView {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  ObjectList();
  ~ObjectList() override;

  /// Null when no row is selected.
  [[nodiscard]] Object* selected() const;
  void select(const Object& object);
  /// Another object, or none, is selected now. Emitted before a selected object ends.
  sigc::signal<void, Object*>& signal_selected() { return signal_selected_; }

 private:
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
  struct Row {
    Gtk::TreeIter iter;
    ScopedConnection active;  // of a device
  };

  void build_column();
  void build_menu();

  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void fill(Object& object, const Gtk::TreeIter& row);
  void set_row(Object& object, const Gtk::TreeIter& row);
  void add_object(Object& object);
  void remove_object(const Object& object);
  void refresh(const Object& object);
  void show_new_row(const Gtk::TreeIter& row);

  bool on_key_press_event(GdkEventKey* event) override;
  bool on_button_press_event(GdkEventButton* event) override;
  void pop_up(unsigned button, guint32 time);
  void announce();
  void start_rename();
  void rename(const Glib::ustring& path, const Glib::ustring& text);
  void delete_selected();
  [[nodiscard]] static bool renamable(const Object& object);

  Columns columns_;
  Glib::RefPtr<Gtk::TreeStore> rows_;
  Gtk::TreeViewColumn column_;
  Gtk::CellRendererText name_cell_;
  Gtk::Menu menu_;
  Gtk::MenuItem* rename_item_ = nullptr;
  Gtk::MenuItem* delete_item_ = nullptr;
  std::unordered_map<const Object*, Row> rows_by_object_;
  Object* announced_ = nullptr;
  sigc::signal<void, Object*> signal_selected_;
  ScopedConnection selection_changed_;
  std::unique_ptr<LayoutFollower> follower_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/button.h>
#include <gtkmm/cellrenderertext.h>
#include <gtkmm/label.h>
#include <gtkmm/treerowreference.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

#include "ui/scripts/cr_script.h"
#include "ui/scripts/script_rows.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

/// The window in which a script is written: each line a sentence whose words can be clicked.
///
/// Every change goes straight into the script, so that closing the window keeps all. There may be
/// several for one script. Closing it, by whatever way, deletes it, and it closes when its script
/// ends; made with `new`.
///
/// Keys: Up and Down choose a row, Left and Right an argument in it; Return or Space edits that,
/// Escape cancels, Delete removes the line, Alt with Up or Down moves it. Undo and redo have the
/// keys that they have in the window from which this one was opened, and the same steps.
class ScriptEditor : public Gtk::Window {
 public:
  explicit ScriptEditor(Script& script);

 private:
  void add_columns();
  void build();
  Gtk::Widget& make_side_buttons();
  Gtk::Widget& make_bottom_buttons();
  void connect();
  void on_hide() override;

  bool on_list_pressed(GdkEventButton* event);
  bool on_list_moved(GdkEventMotion* event);
  bool on_list_key(GdkEventKey* event);
  bool on_editor_key(guint key);
  bool on_move_key(guint key);
  bool on_list_tooltip(int x, int y, bool keyboard, const Glib::RefPtr<Gtk::Tooltip>& tooltip);
  bool on_key_press_event(GdkEventKey* event) override;
  bool step_back(const GdkEventKey& event);

  /// What is there, and the place of the point in its cell; no row beside them.
  Gtk::TreeIter row_at(int x, int y, int& cell_x);
  [[nodiscard]] ScriptRow selected();
  [[nodiscard]] bool is_editing();
  void show_cell(const Gtk::TreeIter& row);
  void choose_next(int step);
  void edit_chosen();
  void on_line_added(ScriptLine& line);
  void show_next_entry(Gtk::TreeIter row);
  void remove_selected();
  void move_selected(int step);
  [[nodiscard]] bool can_move(int step);
  void follow_cursor();
  void follow_selection();
  void keep_chosen();
  [[nodiscard]] int place_of_chosen();
  void follow_name();
  [[nodiscard]] Glib::ustring hint() const;
  void on_script_deleted();

  ObjectRef<Script> script_;
  ScriptRows rows_;
  CRScript cell_;
  Gtk::CellRendererText spoken_;
  Gtk::TreeViewColumn column_;
  Gtk::TreeView list_;
  Gtk::TreeRowReference cursor_;
  int chosen_place_ = 0;       // of the row that was selected last
  Glib::ustring chosen_text_;  // its sentence
  Gtk::Label name_;
  Gtk::Label hint_;
  Gtk::Button up_;
  Gtk::Button down_;
  Gtk::Button delete_;
  Gtk::Button close_;
  ScopedConnection renamed_;
  ScopedConnection deleted_;
  ScopedConnection open_menu_;
};

}  // namespace zemblar

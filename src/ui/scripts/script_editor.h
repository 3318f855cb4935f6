#pragma once

#include <gtkmm/button.h>
#include <gtkmm/cellrenderertext.h>
#include <gtkmm/label.h>
#include <gtkmm/togglebutton.h>
#include <gtkmm/treerowreference.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

#include "ui/scripts/cr_script.h"
#include "ui/scripts/line_menu.h"
#include "ui/scripts/line_notes.h"
#include "ui/scripts/script_rows.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

/// The window for editing a script: each line is a sentence whose arguments can be clicked. A lamp
/// is at each line where a run is. "Why Not?" tells beside each condition whether it holds now.
///
/// Every change is applied to the script at once, so closing the window loses nothing. One script
/// may have several editors. Make it with `new`: it deletes itself when it is closed, by the user
/// or because the script ends.
///
/// Keys: Up and Down select a row, Left and Right an argument in it; Return or Space edits the
/// argument, Escape cancels, Delete removes the line, Alt with Up or Down moves it. The keys of the
/// LineMenu copy it and switch it off; the menu key or the other pointer button opens that. Undo
/// and redo have the same keys and the same steps as in the window from which this one was opened.
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
  void show_line_menu();
  void select(const ScriptLine& line);
  bool on_list_tooltip(int x, int y, bool keyboard, const Glib::RefPtr<Gtk::Tooltip>& tooltip);
  bool on_key_press_event(GdkEventKey* event) override;
  bool step_back(const GdkEventKey& event);

  /// The row at a point of the list, with the x coordinate in its cell; an invalid iterator if
  /// there is no row.
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
  LineNotes notes_;
  CRScript cell_;
  Gtk::CellRendererText spoken_;
  Gtk::TreeViewColumn column_;
  Gtk::TreeView list_;
  LineMenu line_menu_;
  Gtk::TreeRowReference cursor_;
  int chosen_place_ = 0;       // index of the row that was selected last
  Glib::ustring chosen_text_;  // its sentence
  Gtk::Label name_;
  Gtk::Label hint_;
  Gtk::Button up_;
  Gtk::Button down_;
  Gtk::Button delete_;
  Gtk::ToggleButton why_not_;
  Gtk::Button close_;
  ScopedConnection renamed_;
  ScopedConnection deleted_;
  ScopedConnection open_menu_;
};

}  // namespace zemblar

#pragma once

#include <sigc++/trackable.h>

#include "runtime/scoped_connection.h"

typedef struct _GdkEventKey GdkEventKey;

namespace Gtk {
class CellEditable;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// The behaviour of a widget that edits a cell of a tree: keys, focus and the end of editing. A
/// member of that widget, whose `start_editing_vfunc` calls `start`.
///
/// Return ends the editing, Escape cancels it. Tab goes from widget to widget inside the editor,
/// and ends the editing after the last. Moving the focus elsewhere in the window ends it as well. A
/// window that loses the focus does not end it, because the user may look something up in another
/// window. If the tree removes the editor, for example because the row is deleted, the editing is
/// cancelled.
///
/// In each case "editing-done" is emitted once. After a cancel "editing-canceled" is true;
/// otherwise spin buttons have taken over the typed text. Then "remove-widget" is emitted: the tree
/// releases the editor, and a managed one is freed.
class CellEditing : public sigc::trackable {
 public:
  template <typename Editor>
  explicit CellEditing(Editor& editor) : CellEditing(editor, editor) {}

  void start();
  void finish();
  void cancel();

 private:
  CellEditing(Gtk::Widget& widget, Gtk::CellEditable& editable);

  bool on_key(GdkEventKey* event);
  void on_focus(Gtk::Widget* focus);
  void on_done();
  void on_remove();

  Gtk::Widget& widget_;
  Gtk::CellEditable& editable_;  // the same widget
  bool active_ = false;          // started and not yet ended
  ScopedConnection focus_moved_;
};

}  // namespace zemblar

#pragma once

#include <sigc++/trackable.h>

#include "runtime/scoped_connection.h"

typedef struct _GdkEventKey GdkEventKey;

namespace Gtk {
class CellEditable;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// The manners of a widget that edits a cell of a tree. A member of that widget, started by its
/// `start_editing_vfunc`.
///
/// Return ends the editing, Escape cancels it. Tab goes from widget to widget inside the editor and
/// ends it after the last. Focus that goes elsewhere in the window ends it too, but not a window
/// that loses the focus: somebody may look something up in another one. When the tree takes the
/// editor away, as it does when the row goes, that is a cancel.
///
/// However it comes about, "editing-done" is emitted once, with "editing-canceled" true after a
/// cancel; else spin buttons have taken over what was typed. Then comes "remove-widget", with which
/// the tree lets go of the editor, and a managed one is freed.
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
  bool active_ = false;          // started, and not yet done
  ScopedConnection focus_moved_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/paned.h>

#include <map>
#include <memory>

#include "ui/canvas/editor_tools.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/object_picker.h"
#include "ui/windows/layout_window.h"
#include "ui/windows/properties_panel.h"
#include "ui/windows/view_pages.h"

namespace zemblar {

class EditorView;

/// The window for drawing views and editing all objects of the layout. It has pages also for views
/// that are hidden in the track view.
class TrackEditor : public LayoutWindow {
 public:
  /// Opens another window, which deletes itself when closed.
  static void open();
  /// Selects the object in the tree of all objects, in an open editor or in a new one, and brings
  /// the window to the front.
  static void show_object(zemblar::Object& object);

 private:
  TrackEditor();
  void append_new_view_button();
  [[nodiscard]] Gtk::Widget* make_canvas(View& view);
  void refresh_panel();
  [[nodiscard]] EditorView* current_canvas() const;
  void append_edit_menu();
  void step(void (EditHistory::*way)());
  [[nodiscard]] const EditStep* next_step(void (EditHistory::*way)());
  void step_if_next(void (EditHistory::*way)(), const EditStep* wanted);
  void step_now(void (EditHistory::*way)());
  void refresh_edit_menu();
  void use_tool(const ViewClass& kind, bool existing);
  static void place_new(EditorView& canvas, const ViewClass& kind);

  EditHistory history_;
  Gtk::MenuItem* undo_ = nullptr;  // owned by the menu
  Gtk::MenuItem* redo_ = nullptr;
  EditorTools tools_;
  Gtk::HPaned sides_;
  std::map<const View*, EditorView*> canvases_;  // only the entry of the current view is valid
  ViewPages pages_;
  PropertiesPanel panel_;
  ObjectPicker picker_;
};

}  // namespace zemblar

#pragma once

#include "ui/diagram_canvas.h"

namespace zemblar {

/// The canvas of the track editor: shows a view plainly, with its nodes, and which object is
/// selected. A click selects, the right button opens the menu of what is under the pointer.
class EditorView : public DiagramCanvas {
 public:
  explicit EditorView(View& view);

  /// Null when nothing is selected.
  [[nodiscard]] ViewObj* get_selected() const { return selected_; }
  sigc::signal<void>& signal_selected_changed() { return signal_selected_changed_; }

 protected:
  void draw_object(const Context& context, ViewObj& object) override;
  void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) override;
  [[nodiscard]] PixelBox box_of(const Context& context, ViewObj& object) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_button_release_event(GdkEventButton* event) override;

 private:
  void select(ViewObj* object);

  ViewObj* selected_ = nullptr;
  std::shared_ptr<const ViewTag> tag_;  // under the pointer when the right button was pressed
  sigc::signal<void> signal_selected_changed_;
  ScopedConnection object_removed_;
};

}  // namespace zemblar

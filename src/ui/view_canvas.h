#pragma once

#include <gtkmm/drawingarea.h>

#include "diagram/view.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// An empty page: the view's colour, and in its middle what can be done there.
class ViewCanvas : public Gtk::DrawingArea {
 public:
  ViewCanvas(View& view, const Glib::ustring& hint);

 private:
  bool on_expose_event(GdkEventExpose* event) override;
  void repaint();
  /// Black or white, whichever can be read on the view's colour.
  [[nodiscard]] double ink() const;

  View& view_;
  Glib::ustring hint_;
  ScopedConnection colour_changed_;
  ScopedConnection changed_;
};

}  // namespace zemblar

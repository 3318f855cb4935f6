#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/button.h>
#include <gtkmm/eventbox.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class DiagramCanvas;

/// A small button over the top right corner of a canvas, shown while a part of the drawing is not
/// visible. A click fits the drawing into the window. Only the button covers the canvas, not the
/// space beside it.
class FitHint : public Gtk::Alignment {
 public:
  FitHint();

  /// Sets the shown canvas, or null. The canvas must exist until the next call.
  void follow(DiagramCanvas* canvas);

 private:
  void refresh();

  DiagramCanvas* canvas_ = nullptr;
  Gtk::EventBox frame_;  // has a window of its own, over that of the canvas
  Gtk::Button button_;
  ScopedConnection visibility_checked_;
};

}  // namespace zemblar

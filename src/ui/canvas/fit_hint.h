#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/button.h>
#include <gtkmm/eventbox.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class DiagramCanvas;

/// A small button over the upper right corner of a canvas, there while a part of the drawing is out
/// of sight. A click fits the drawing into the window. What is beside the button is free for the
/// canvas.
class FitHint : public Gtk::Alignment {
 public:
  FitHint();

  /// The canvas that is shown now; null for none. It lives until the next call.
  void follow(DiagramCanvas* canvas);

 private:
  void refresh();

  DiagramCanvas* canvas_ = nullptr;
  Gtk::EventBox frame_;  // has a window of its own, over that of the canvas
  Gtk::Button button_;
  ScopedConnection looked_;
};

}  // namespace zemblar

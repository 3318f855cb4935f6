#include "ui/canvas/fit_hint.h"

#include "core/i18n.h"
#include "ui/canvas/diagram_canvas.h"

namespace zemblar {
namespace {

/// Leaves room for the scroll bar of a large plan.
constexpr guint from_side = 20;
constexpr guint from_top = 4;

}  // namespace

FitHint::FitHint()
    : Gtk::Alignment(Gtk::ALIGN_RIGHT, Gtk::ALIGN_TOP, 0, 0),
      button_(_("Not All Is in Sight: Fit (Ctrl+0)")) {
  set_padding(from_top, 0, 0, from_side);
  // Without focus, so that keys go to the drawing.
  button_.set_can_focus(false);
  button_.set_tooltip_text(
      _("Part of the drawing is outside the window. A click shows all of it."));
  button_.signal_clicked().connect([this] {
    if (canvas_) canvas_->show_whole();
  });
  frame_.add(button_);
  add(frame_);
  frame_.set_no_show_all();
  show();
}

void FitHint::follow(DiagramCanvas* canvas) {
  canvas_ = canvas;
  visibility_checked_ = {};
  if (canvas)
    visibility_checked_ = canvas->signal_visibility_checked().connect([this] { refresh(); });
  refresh();
}

// When a page is shown again, its windows are on top, so the button is raised.
void FitHint::refresh() {
  const bool wanted = canvas_ && !canvas_->is_all_seen();
  button_.set_visible(wanted);
  frame_.set_visible(wanted);
  if (frame_.get_realized()) frame_.get_window()->raise();
}

}  // namespace zemblar

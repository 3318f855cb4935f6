#include "ui/view_canvas.h"

#include <atkmm/object.h>
#include <cairomm/context.h>
#include <gdkmm/general.h>

namespace zemblar {

ViewCanvas::ViewCanvas(View& view, const Glib::ustring& hint) : view_(view), hint_(hint) {
  get_accessible()->set_name(view.get_name());
  colour_changed_ = view.property_colour().signal_changed().connect([this] { repaint(); });
  changed_ = view.signal_changed().connect([this] { repaint(); });
  repaint();
}

void ViewCanvas::repaint() {
  modify_bg(Gtk::STATE_NORMAL, view_.get_colour());
  queue_draw();
}

double ViewCanvas::ink() const {
  const auto colour = view_.get_colour();
  const double luminance =
      0.299 * colour.get_red_p() + 0.587 * colour.get_green_p() + 0.114 * colour.get_blue_p();
  return luminance > 0.5 ? 0.0 : 1.0;
}

bool ViewCanvas::on_expose_event(GdkEventExpose* /*event*/) {
  const auto context = get_window()->create_cairo_context();
  const double width = get_width();
  const double height = get_height();
  if (const auto& picture = view_.image().pixbuf()) {
    Gdk::Cairo::set_source_pixbuf(context, picture, (width - view_.image().width()) * 0.5,
                                  (height - view_.image().height()) * 0.5);
    context->paint();
  }
  const auto text = create_pango_layout(hint_);
  text->set_alignment(Pango::ALIGN_CENTER);
  int text_width = 0;
  int text_height = 0;
  text->get_pixel_size(text_width, text_height);
  context->set_source_rgba(ink(), ink(), ink(), 0.6);
  context->move_to((width - text_width) * 0.5, (height - text_height) * 0.5);
  text->show_in_cairo_context(context);
  return true;
}

}  // namespace zemblar

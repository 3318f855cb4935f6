#include "ui/toolkit/column_scroll.h"

#include <gtkmm/adjustment.h>
#include <gtkmm/box.h>
#include <gtkmm/viewport.h>

#include <algorithm>

namespace zemblar {
namespace {

constexpr int desktop_height = 70;  // pixels: a window's title bar and a desktop panel
constexpr int least_height = 80;

}  // namespace

ColumnScroll::ColumnScroll(Gtk::Widget& content) : content_(content) {
  set_policy(Gtk::POLICY_NEVER, Gtk::POLICY_NEVER);
  set_can_focus(false);  // without scrolling there is nothing to operate by keys
  auto* viewport = Gtk::manage(new Gtk::Viewport(*get_hadjustment(), *get_vadjustment()));
  viewport->set_shadow_type(Gtk::SHADOW_NONE);
  viewport->add(content);
  add(*viewport);
}

void ColumnScroll::on_size_request(Gtk::Requisition* requisition) {
  const int whole = content_.size_request().height;
  const int shown = std::min(whole, room());
  const auto policy = shown < whole ? Gtk::POLICY_AUTOMATIC : Gtk::POLICY_NEVER;
  set_policy(Gtk::POLICY_NEVER, policy);
  Gtk::ScrolledWindow::on_size_request(requisition);
  requisition->height = shown;
}

// The height of the screen minus that of the other rows of the column.
int ColumnScroll::room() const {
  const auto* column = dynamic_cast<const Gtk::Box*>(get_parent());
  if (!column) return least_height;
  int left = get_screen()->get_height() - desktop_height - 2 * column->get_border_width();
  for (const auto* row : column->get_children()) {
    if (row == this || !row->get_visible()) continue;
    left -= const_cast<Gtk::Widget*>(row)->size_request().height + column->get_spacing();
  }
  return std::max(left, least_height);
}

void show_in_viewport(Gtk::Widget& widget, const Gdk::Rectangle& part) {
  auto* viewport = dynamic_cast<Gtk::Viewport*>(widget.get_ancestor(GTK_TYPE_VIEWPORT));
  if (viewport)
    viewport->get_vadjustment()->clamp_page(part.get_y(), part.get_y() + part.get_height());
}

}  // namespace zemblar

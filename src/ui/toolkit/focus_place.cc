#include "ui/toolkit/focus_place.h"

#include <gtkmm/viewport.h>
#include <gtkmm/window.h>

#include <algorithm>

namespace zemblar {
namespace {

/// All children, including internal ones of composite widgets.
std::vector<GtkWidget*> parts_of(GtkWidget* widget) {
  std::vector<GtkWidget*> parts;
  if (!GTK_IS_CONTAINER(widget)) return parts;
  const auto append = [](GtkWidget* part, gpointer list) {
    static_cast<std::vector<GtkWidget*>*>(list)->push_back(part);
  };
  gtk_container_forall(GTK_CONTAINER(widget), append, &parts);
  return parts;
}

}  // namespace

FocusPlace::FocusPlace(Gtk::Container& container) : container_(container) {
  auto* window = dynamic_cast<Gtk::Window*>(container.get_toplevel());
  auto* focus = window ? window->get_focus() : nullptr;
  if (!focus || !focus->is_ancestor(container)) return;
  for (auto* part = focus->gobj(); part != container.Gtk::Widget::gobj(); part = part->parent) {
    const auto parts = parts_of(part->parent);
    path_.push_back(static_cast<std::size_t>(std::ranges::find(parts, part) - parts.begin()));
  }
  std::ranges::reverse(path_);
}

void FocusPlace::restore(Gtk::Widget& otherwise) const {
  if (path_.empty()) return;
  auto* widget = find();
  focus_added(widget && widget->get_visible() && widget->get_can_focus() ? *widget : otherwise);
}

Gtk::Widget* FocusPlace::find() const {
  auto* widget = container_.Gtk::Widget::gobj();
  for (const auto index : path_) {
    const auto parts = parts_of(widget);
    const bool is_child = widget == container_.Gtk::Widget::gobj();
    if (parts.empty() || (!is_child && index >= parts.size())) return nullptr;
    widget = parts[std::min(index, parts.size() - 1)];
  }
  return Glib::wrap(widget);
}

void focus_added(Gtk::Widget& widget) {
  if (auto* port = dynamic_cast<Gtk::Viewport*>(widget.get_ancestor(GTK_TYPE_VIEWPORT))) {
    port->check_resize();
  }
  if (widget.get_can_focus()) {
    widget.grab_focus();
  } else {
    widget.child_focus(Gtk::DIR_TAB_FORWARD);
  }
}

}  // namespace zemblar

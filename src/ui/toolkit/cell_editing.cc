#include "ui/toolkit/cell_editing.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/celleditable.h>
#include <gtkmm/spinbutton.h>
#include <gtkmm/window.h>

#include <utility>

namespace zemblar {
namespace {

/// Calls `act` for each widget of class T among `widget` and everything that it contains.
template <typename T, typename Do>
void for_each(Gtk::Widget& widget, const Do& act) {
  if (auto* wanted = dynamic_cast<T*>(&widget)) act(*wanted);
  if (auto* container = dynamic_cast<Gtk::Container*>(&widget)) {
    for (auto* child : container->get_children()) for_each<T>(*child, act);
  }
}

}  // namespace

// Connects before all other handlers, so that these see the complete value and are called once.
CellEditing::CellEditing(Gtk::Widget& widget, Gtk::CellEditable& editable)
    : widget_(widget), editable_(editable) {
  widget.signal_key_press_event().connect(sigc::mem_fun(*this, &CellEditing::on_key), false);
  editable.signal_editing_done().connect(sigc::mem_fun(*this, &CellEditing::on_done), false);
  editable.signal_remove_widget().connect(sigc::mem_fun(*this, &CellEditing::on_remove), false);
}

void CellEditing::start() {
  active_ = true;
  // An entry handles the Return key itself.
  for_each<Gtk::Entry>(widget_, [this](auto& entry) {
    entry.signal_activate().connect(sigc::mem_fun(*this, &CellEditing::finish));
  });
  // A step that was set after the range takes effect only at the adjustment's next "changed".
  // Without it the first arrow key would do nothing.
  for_each<Gtk::SpinButton>(widget_, [](auto& spin) { spin.get_adjustment()->changed(); });
  if (auto* window = dynamic_cast<Gtk::Window*>(widget_.get_toplevel())) {
    focus_moved_ = window->signal_set_focus().connect(sigc::mem_fun(*this, &CellEditing::on_focus));
  }
}

void CellEditing::finish() {
  if (!active_) return;
  // Either signal may destroy the editor together with this object.
  auto* const editable = editable_.gobj();
  g_object_ref(editable);
  gtk_cell_editable_editing_done(editable);
  gtk_cell_editable_remove_widget(editable);
  g_object_unref(editable);
}

void CellEditing::cancel() {
  if (!active_) return;
  editable_.property_editing_canceled() = true;
  finish();
}

bool CellEditing::on_key(GdkEventKey* event) {
  if (!active_) return false;
  switch (event->keyval) {
    case GDK_Escape:
      cancel();
      return true;
    case GDK_Return:
    case GDK_KP_Enter:
    case GDK_ISO_Enter:
      finish();
      return true;
    case GDK_Tab:
    case GDK_KP_Tab:
      return widget_.child_focus(Gtk::DIR_TAB_FORWARD);
    case GDK_ISO_Left_Tab:
      return widget_.child_focus(Gtk::DIR_TAB_BACKWARD);
    default:
      return false;
  }
}

void CellEditing::on_focus(Gtk::Widget* focus) {
  if (focus && focus != &widget_ && !focus->is_ancestor(widget_)) finish();
}

void CellEditing::on_done() {
  // If a handler moves the focus, the tree ends the editing a second time.
  if (!std::exchange(active_, false)) {
    g_signal_stop_emission_by_name(editable_.gobj(), "editing-done");
    return;
  }
  if (editable_.property_editing_canceled()) return;
  for_each<Gtk::SpinButton>(widget_, [](auto& spin) { spin.update(); });
}

void CellEditing::on_remove() {
  if (active_) {
    editable_.property_editing_canceled() = true;
    editable_.editing_done();
  }
  // The tree takes the focus back only from the editor itself and only in the active window, so it
  // is moved here. Uses the C functions, because the C++ objects of the tree and the window may be
  // in destruction.
  auto* const widget = widget_.gobj();
  auto* const top = gtk_widget_get_toplevel(widget);
  auto* const focus = GTK_IS_WINDOW(top) ? gtk_window_get_focus(GTK_WINDOW(top)) : nullptr;
  if (focus && (focus == widget || gtk_widget_is_ancestor(focus, widget))) {
    gtk_widget_grab_focus(gtk_widget_get_parent(widget));
  }
}

}  // namespace zemblar

#include "ui/toolkit/widget_end.h"

#include <gtkmm/container.h>

#include <vector>

namespace zemblar {
namespace {

using Widgets = std::vector<GtkWidget*>;

/// Appends a widget and all its descendants to the list, each with a reference.
void hold(GtkWidget* widget, gpointer widgets) {
  static_cast<Widgets*>(widgets)->push_back(GTK_WIDGET(g_object_ref(widget)));
  if (GTK_IS_CONTAINER(widget)) gtk_container_forall(GTK_CONTAINER(widget), &hold, widgets);
}

// Detaches the C++ wrapper of a managed widget. If the destruction of the widget did it, that would
// leak 48 bytes, because it stores a note about the wrapper in the widget's data while these are
// being cleared.
void end_wrapper(GtkWidget* widget) {
  auto* wrapper = Glib::ObjectBase::_get_current_wrapper(G_OBJECT(widget));
  auto* managed = dynamic_cast<Gtk::Object*>(wrapper);
  if (managed && managed->is_managed_()) {
    g_object_set_qdata(G_OBJECT(widget), Glib::quark_, nullptr);
  }
}

}  // namespace

void end_widget(Gtk::Widget& widget) {
  Widgets held;
  hold(widget.gobj(), &held);
  gtk_widget_destroy(widget.gobj());
  for (auto next = held.rbegin(); next != held.rend(); ++next) {
    end_wrapper(*next);
    g_object_unref(*next);
  }
}

void end_children(Gtk::Container& container) {
  for (auto* child : container.get_children()) end_widget(*child);
}

}  // namespace zemblar

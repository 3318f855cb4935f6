#include "ui/toolkit/close_key.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/accelgroup.h>
#include <gtkmm/window.h>

namespace zemblar {

void close_by_key(Gtk::Window& window) {
  const auto keys = Gtk::AccelGroup::create();
  gtk_accel_group_connect(
      keys->gobj(), GDK_KEY_w, GDK_CONTROL_MASK, GtkAccelFlags(0),
      g_cclosure_new_object_swap(G_CALLBACK(gtk_widget_hide), G_OBJECT(window.gobj())));
  window.add_accel_group(keys);
}

}  // namespace zemblar

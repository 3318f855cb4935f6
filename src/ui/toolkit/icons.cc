#include "ui/toolkit/icons.h"

#include <gtkmm/icontheme.h>

#include <string>

namespace zemblar {
namespace {

const char* const names[] = {
    "orvane-red-dot", "orvane-green-dot", "orvane-crossing", "orvane-label", "orvane-points",
    "orvane-scissor", "orvane-signal",    "orvane-zone",     "zemblar",      "zemblar-no-power",
};

// Sizes in pixels for menus, tool bars, drags and dialogs.
constexpr int sizes[] = {16, 24, 32, 48};

Glib::RefPtr<Gdk::Pixbuf> wrap(GdkPixbuf* pixbuf) {
  return pixbuf ? Glib::wrap(pixbuf) : Glib::RefPtr<Gdk::Pixbuf>();
}

}  // namespace

void add_builtin_icons() {
  const auto theme = Gtk::IconTheme::get_default();
  for (const auto* name : names) {
    if (theme->has_icon(name)) continue;
    const auto resource = std::string("/zemblar/icons/") + name + ".svg";
    for (const int size : sizes) {
      auto pixbuf =
          wrap(gdk_pixbuf_new_from_resource_at_scale(resource.c_str(), size, size, true, nullptr));
      if (pixbuf) Gtk::IconTheme::add_builtin_icon(name, size, pixbuf);
    }
  }
}

}  // namespace zemblar

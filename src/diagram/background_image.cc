#include "diagram/background_image.h"

#include <glibmm/convert.h>
#include <glibmm/miscutils.h>
#include <gtkmm/main.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"

namespace zemblar {
namespace {

std::string absolute(const std::string& path) {
  if (Glib::path_is_absolute(path) || !Layout::exists()) return path;
  const auto file = Layout::get().get_file();
  return file ? Glib::build_filename(file->get_parent()->get_path(), path) : path;
}

Glib::RefPtr<Gdk::Pixbuf> read_pixbuf(const std::string& path) {
  Gtk::Main::init_gtkmm_internals();  // layouts are also checked by programs without a toolkit
  return Gdk::Pixbuf::create_from_file(absolute(path));
}

}  // namespace

void BackgroundImage::load(const std::string& path) {
  path_ = path;
  pixbuf_.reset();
  if (path.empty()) return;
  try {
    pixbuf_ = read_pixbuf(path);
  } catch (const Glib::Error& error) {
    set_status(Glib::ustring::compose(_("Couldn't load the image %1: %2"),
                                      Glib::filename_display_name(path), error.what()));
  }
}

}  // namespace zemblar

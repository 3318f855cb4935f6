#include "diagram/background_image.h"

#include <glibmm/convert.h>
#include <glibmm/miscutils.h>
#include <gtkmm/main.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"

namespace zemblar {
namespace {

/// The folder of the open layout file, empty when it has none yet.
std::string layout_folder() {
  if (!Layout::exists()) return {};
  const auto file = Layout::get().get_file();
  return file ? file->get_parent()->get_path() : std::string();
}

Glib::RefPtr<Gdk::Pixbuf> read_pixbuf(const std::string& path) {
  Gtk::Main::init_gtkmm_internals();  // layouts are also checked by programs without a toolkit
  const auto folder = layout_folder();
  const bool relative = !Glib::path_is_absolute(path);
  try {
    return Gdk::Pixbuf::create_from_file(relative ? Glib::build_filename(folder, path) : path);
  } catch (const Glib::Error&) {
    // A railway that moved house brings its pictures along, beside the layout file.
    const auto beside = Glib::build_filename(folder, Glib::path_get_basename(path));
    if (folder.empty() || !Glib::file_test(beside, Glib::FILE_TEST_EXISTS)) throw;
    return Gdk::Pixbuf::create_from_file(beside);
  }
}

}  // namespace

void BackgroundImage::load(const std::string& path) {
  path_.clear();
  pixbuf_.reset();
  if (path.empty()) return;
  try {
    pixbuf_ = read_pixbuf(path);
    path_ = path;
  } catch (const Glib::Error& error) {
    set_status(Glib::ustring::compose(
        _("Couldn't load the image %1 (%2). Choose it anew before you save."),
        Glib::filename_display_name(path), error.what()));
  }
}

}  // namespace zemblar

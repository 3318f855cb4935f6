#include "diagram/background_image.h"

#include <giomm/error.h>
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

/// Where to find the picture. A railway that moved house brings its pictures along, beside the
/// layout file.
std::string locate(const std::string& path) {
  const auto folder = layout_folder();
  const auto named = Glib::path_is_absolute(path) ? path : Glib::build_filename(folder, path);
  const auto beside = Glib::build_filename(folder, Glib::path_get_basename(path));
  const auto exists = [](const std::string& file) {
    return Glib::file_test(file, Glib::FILE_TEST_EXISTS);
  };
  return folder.empty() || exists(named) || !exists(beside) ? named : beside;
}

}  // namespace

void BackgroundImage::load(const std::string& path) {
  *this = {};
  if (path.empty()) return;
  Gtk::Main::init_gtkmm_internals();  // layouts are also checked by programs without a toolkit
  const auto file = locate(path);
  try {
    // Opening a pipe would wait for ever.
    if (Glib::file_test(file, Glib::FILE_TEST_EXISTS) &&
        !Glib::file_test(file, Glib::FILE_TEST_IS_REGULAR)) {
      throw Gio::Error(Gio::Error::NOT_REGULAR_FILE, _("it is no regular file"));
    }
    pixbuf_ = Gdk::Pixbuf::create_from_file(file);
    path_ = path;
    file_ = file;
  } catch (const Glib::Error& error) {
    set_status(Glib::ustring::compose(
        _("Couldn't load the image %1 (%2). Choose it anew before you save."),
        Glib::filename_display_name(path), error.what()));
  }
}

}  // namespace zemblar

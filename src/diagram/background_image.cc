#include "diagram/background_image.h"

#include <giomm/error.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <gtkmm/main.h>

#include "core/i18n.h"
#include "core/status.h"

namespace zemblar {
void BackgroundImage::load(const PicturePath& picture) {
  *this = {};
  wanted_ = picture;
  if (picture.empty()) return;
  Gtk::Main::init_gtkmm_internals();  // programs without a toolkit load layouts too
  const auto file = picture.file();
  try {
    // Opening a pipe would block.
    if (Glib::file_test(file, Glib::FILE_TEST_EXISTS) &&
        !Glib::file_test(file, Glib::FILE_TEST_IS_REGULAR)) {
      throw Gio::Error(Gio::Error::NOT_REGULAR_FILE, _("it is no regular file"));
    }
    pixbuf_ = Gdk::Pixbuf::create_from_file(file);
    picture_ = picture;
    file_ = file;
  } catch (const Glib::Error& error) {
    set_status(Glib::ustring::compose(
        _("Couldn't load the image %1 (%2). Choose it anew before you save."),
        Glib::filename_display_name(picture.path()), error.what()));
  }
}

}  // namespace zemblar

#include "ui/toolkit/picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <glibmm/convert.h>
#include <glibmm/error.h>
#include <glibmm/fileutils.h>
#include <glibmm/wrap.h>

#include "core/i18n.h"
#include "core/status.h"

namespace zemblar {

Glib::RefPtr<Gdk::Pixbuf> load_resource(const std::string& path) {
  GError* error = nullptr;
  auto* pixbuf = gdk_pixbuf_new_from_resource(("/zemblar/" + path).c_str(), &error);
  if (pixbuf) return Glib::wrap(pixbuf);
  set_status(Glib::ustring::compose(_("The picture \"%1\" cannot be shown: %2"), path,
                                    Glib::ustring(error->message)));
  g_error_free(error);
  return {};
}

Glib::RefPtr<Gdk::Pixbuf> load_picture(const std::string& path, int size) {
  // Reading a pipe would block.
  if (!Glib::file_test(path, Glib::FILE_TEST_IS_REGULAR)) return {};
  try {
    const auto picture = Gdk::Pixbuf::create_from_file(path);
    if (picture->get_width() <= size && picture->get_height() <= size) return picture;
    return Gdk::Pixbuf::create_from_file(path, size, size);
  } catch (const Glib::Error&) {
    return {};
  }
}

Glib::RefPtr<Gdk::Pixbuf> load_picture(const PicturePath& picture, int size) {
  auto loaded = load_picture(picture.file(), size);
  if (!loaded && !picture.empty() && get_status().empty()) {
    set_status(Glib::ustring::compose(_("There is no picture in the file %1."),
                                      Glib::filename_display_name(picture.path())));
  }
  return loaded;
}

}  // namespace zemblar

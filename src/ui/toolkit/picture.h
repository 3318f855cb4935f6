#pragma once

#include <gdkmm/pixbuf.h>

#include <string>

#include "core/picture_path.h"

namespace zemblar {

/// A picture that is compiled into the program, by its path below /zemblar/. Null, with a message
/// in the status line, when the toolkit cannot read it: SVG needs a loader of its own.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_resource(const std::string& path);

/// A picture from a file, scaled down to fit into a square of `size` pixels. Null for no path and
/// for a file that holds no picture.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_picture(const std::string& path, int size);

/// The same; the status line tells of a picture that is missing if it has nothing else to tell.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_picture(const PicturePath& picture, int size);

}  // namespace zemblar

#pragma once

#include <gdkmm/pixbuf.h>

#include <string>

#include "core/picture_path.h"

namespace zemblar {

/// A picture compiled into the program, by its path below /zemblar/. Null, with a message in the
/// status line, when the toolkit cannot read it: SVG needs a separate loader module.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_resource(const std::string& path);

/// A picture from a file, scaled down to fit into a square of `size` pixels. Null for an empty path
/// and for a file that is no picture.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_picture(const std::string& path, int size);

/// The same. The status line reports a missing picture, unless it already shows a text.
[[nodiscard]] Glib::RefPtr<Gdk::Pixbuf> load_picture(const PicturePath& picture, int size);

}  // namespace zemblar

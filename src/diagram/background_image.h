#pragma once

#include <gdkmm/pixbuf.h>

#include <string>

#include "core/picture_path.h"

namespace zemblar {

/// The picture under a track diagram, for instance a plan to trace: a path and the loaded picture.
/// One pixel is one diagram unit. Loading needs no display.
class BackgroundImage {
 public:
  /// Loads the file. If that fails, the image is empty, so that the next save drops the path, and
  /// the status line names the file.
  void load(const PicturePath& picture);

  /// The path of the loaded picture; empty if loading failed.
  [[nodiscard]] const PicturePath& picture() const { return picture_; }
  /// The path given to `load`, even if loading failed.
  [[nodiscard]] const PicturePath& wanted() const { return wanted_; }
  /// The file that was loaded.
  [[nodiscard]] const std::string& file() const { return file_; }
  /// Null when there is nothing to draw.
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixbuf>& pixbuf() const { return pixbuf_; }
  [[nodiscard]] int width() const { return pixbuf_ ? pixbuf_->get_width() : 0; }
  [[nodiscard]] int height() const { return pixbuf_ ? pixbuf_->get_height() : 0; }

 private:
  PicturePath picture_;
  PicturePath wanted_;
  std::string file_;
  Glib::RefPtr<Gdk::Pixbuf> pixbuf_;
};

}  // namespace zemblar

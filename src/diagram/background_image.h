#pragma once

#include <gdkmm/pixbuf.h>

#include <string>

#include "core/picture_path.h"

namespace zemblar {

/// The picture under a track diagram, for instance a plan to trace: a path, and what was loaded
/// from it. One pixel is one diagram unit. Loading needs no display.
class BackgroundImage {
 public:
  /// Loads the file. A picture that cannot be loaded leaves the image empty, so that the next save
  /// drops its path, and is named in the status line.
  void load(const PicturePath& picture);

  /// What was loaded.
  [[nodiscard]] const PicturePath& picture() const { return picture_; }
  /// What was to be loaded.
  [[nodiscard]] const PicturePath& wanted() const { return wanted_; }
  /// Where the picture was found.
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

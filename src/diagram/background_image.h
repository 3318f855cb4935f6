#pragma once

#include <gdkmm/pixbuf.h>

#include <string>

namespace zemblar {

/// The picture under a track diagram, for instance a plan to trace: a path, and what was loaded
/// from it. One pixel is one diagram unit. Loading needs no display.
class BackgroundImage {
 public:
  /// Loads the file; an empty path means no image. A path that is not absolute starts from the
  /// folder of the layout file, and a picture that is not where its path says is looked for by its
  /// name in that folder. One that cannot be loaded leaves the image empty, so that the next save
  /// drops its path, and is named in the status line.
  void load(const std::string& path);

  [[nodiscard]] const std::string& path() const { return path_; }
  /// Where the picture was found.
  [[nodiscard]] const std::string& file() const { return file_; }
  /// Null when there is nothing to draw.
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixbuf>& pixbuf() const { return pixbuf_; }
  [[nodiscard]] int width() const { return pixbuf_ ? pixbuf_->get_width() : 0; }
  [[nodiscard]] int height() const { return pixbuf_ ? pixbuf_->get_height() : 0; }

 private:
  std::string path_;
  std::string file_;
  Glib::RefPtr<Gdk::Pixbuf> pixbuf_;
};

}  // namespace zemblar

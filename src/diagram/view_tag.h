#pragma once

#include <cairomm/context.h>

#include <memory>
#include <vector>

namespace zemblar {

class ViewObj;

/// The object, or the part of an object, that a pixel of a diagram belongs to.
struct ViewTag {
  explicit ViewTag(ViewObj* drawn) : object(drawn) {}
  virtual ~ViewTag() = default;
  ViewTag(const ViewTag&) = delete;
  ViewTag& operator=(const ViewTag&) = delete;

  ViewObj* object;  ///< painted the tag; may have ended when the tag image is rebuilt
};

/// A tag of an object whose parts are numbered.
struct ViewTagInt : ViewTag {
  ViewTagInt(ViewObj* drawn, unsigned part) : ViewTag(drawn), value(part) {}

  unsigned value;
};

/// The tags of one tag image, in the order in which they were painted. They are shared, because the
/// tag of the part being dragged is kept while the tag image is rebuilt.
using SelectionTable = std::vector<std::shared_ptr<const ViewTag>>;

/// Adds a tag to the table and sets the context's colour to the tag's number, with which to paint
/// it. The first one is (0, 0, 1), in 255ths.
void add_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table,
             std::shared_ptr<const ViewTag> tag);

/// A hidden picture of the same size as the canvas, in which each part that can be clicked is
/// painted in the colour of its number. A part painted later is on top, as on the canvas.
class TagImage {
 public:
  /// Clears the image, sets its size in pixels, and makes a context with this matrix for painting
  /// tags.
  void begin(int width, int height, const Cairo::Matrix& matrix);
  /// The context for painting tags. Call it again after each `hit`.
  [[nodiscard]] const Cairo::RefPtr<Cairo::Context>& context() {
    pixels_ = nullptr;
    return context_;
  }
  [[nodiscard]] SelectionTable& table() { return table_; }

  /// The tag at a place of the canvas; null for the background and for places outside. Throws
  /// std::logic_error "Invalid selection_table index" for a number that no tag has. Copy the
  /// pointer to keep it beyond the next painting.
  [[nodiscard]] const std::shared_ptr<const ViewTag>& hit(double x, double y) const;

 private:
  Cairo::RefPtr<Cairo::ImageSurface> surface_;
  Cairo::RefPtr<Cairo::Context> context_;
  SelectionTable table_;
  int width_ = 0;
  int height_ = 0;
  mutable const unsigned char* pixels_ = nullptr;  // null while the surface must be flushed first
  mutable std::ptrdiff_t stride_ = 0;
};

}  // namespace zemblar

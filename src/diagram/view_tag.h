#pragma once

#include <cairomm/context.h>

#include <memory>
#include <vector>

namespace zemblar {

class ViewObj;

/// What a pixel of a diagram stands for: an object, or a part of one.
struct ViewTag {
  explicit ViewTag(ViewObj* drawn) : object(drawn) {}
  virtual ~ViewTag() = default;
  ViewTag(const ViewTag&) = delete;
  ViewTag& operator=(const ViewTag&) = delete;

  ViewObj* object;  ///< which drew it; gone when the picture is rebuilt
};

/// For an object that only tells its parts apart.
struct ViewTagInt : ViewTag {
  ViewTagInt(ViewObj* drawn, unsigned part) : ViewTag(drawn), value(part) {}

  unsigned value;
};

/// The tags of one tag image, in the order in which they were painted. They are shared: whoever
/// drags one keeps it while the picture is rebuilt under the pointer.
using SelectionTable = std::vector<std::shared_ptr<const ViewTag>>;

/// Enters a tag into the table and makes its number the colour in which it is to be painted: the
/// first one is (0, 0, 1), in 255ths.
void add_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table,
             std::shared_ptr<const ViewTag> tag);

/// The picture behind a canvas, of the same size, in which each thing that can be clicked is
/// painted in a colour that is its own number. Painted later is on top, as on the canvas.
class TagImage {
 public:
  /// Empty, of that size in pixels, with a context that paints tags through that matrix.
  void begin(int width, int height, const Cairo::Matrix& matrix);
  /// Where tags are painted. Asked for anew after each `hit`.
  [[nodiscard]] const Cairo::RefPtr<Cairo::Context>& context() {
    pixels_ = nullptr;
    return context_;
  }
  [[nodiscard]] SelectionTable& table() { return table_; }

  /// What is under a place of the canvas; null for the background and for places outside. Throws
  /// std::logic_error "Invalid selection_table index" for a number that no tag has. Who keeps it
  /// beyond the next painting copies it.
  [[nodiscard]] const std::shared_ptr<const ViewTag>& hit(double x, double y) const;

 private:
  Cairo::RefPtr<Cairo::ImageSurface> surface_;
  Cairo::RefPtr<Cairo::Context> context_;
  SelectionTable table_;
  int width_ = 0;
  int height_ = 0;
  mutable const unsigned char* pixels_ = nullptr;  // null while there may be something to flush
  mutable std::ptrdiff_t stride_ = 0;
};

}  // namespace zemblar

#pragma once

#include <cairomm/context.h>
#include <gdkmm/pixbuf.h>
#include <glibmm/propertyproxy.h>
#include <gtkmm/widget.h>

namespace zemblar {

/// A round dial for two speeds from 0 to 126: the red needle shows the wanted speed, the black one
/// the actual speed.
///
/// Speed 0 points 135 degrees to the left of straight up, 126 the same to the right. The face is
/// 240 by 240 pixels, centred in the allocation. Draws on its parent's window.
class Dial : public Gtk::Widget {
 public:
  Dial();

  static constexpr int size = 240;

  [[nodiscard]] unsigned get_black() const { return black_; }
  void set_black(unsigned speed);
  [[nodiscard]] bool get_black_visible() const { return black_visible_; }
  void set_black_visible(bool visible);
  [[nodiscard]] unsigned get_red() const { return red_; }
  void set_red(unsigned speed);
  [[nodiscard]] bool get_red_visible() const { return red_visible_; }
  void set_red_visible(bool visible);

  Glib::PropertyProxy<unsigned> property_black() { return {this, "black"}; }
  Glib::PropertyProxy<bool> property_black_visible() { return {this, "black-visible"}; }
  Glib::PropertyProxy<unsigned> property_red() { return {this, "red"}; }
  Glib::PropertyProxy<bool> property_red_visible() { return {this, "red-visible"}; }

  /// The speeds in words; empty when no needle is visible.
  [[nodiscard]] Glib::ustring describe() const;

 protected:
  void on_size_request(Gtk::Requisition* requisition) override;
  bool on_expose_event(GdkEventExpose* event) override;

 private:
  using Picture = Glib::RefPtr<Gdk::Pixbuf>;

  template <typename T>
  void change(T& field, T value, const char* property);
  /// `pivot` is the y coordinate, in the needle's picture, of the centre of rotation.
  static void draw_needle(const Cairo::RefPtr<Cairo::Context>& cr, const Picture& needle,
                          unsigned speed, double pivot);

  unsigned black_ = 0;
  bool black_visible_ = false;
  unsigned red_ = 0;
  bool red_visible_ = true;
  Picture face_;
  Picture needle_red_;
  Picture needle_black_;
  Picture glass_;
};

}  // namespace zemblar

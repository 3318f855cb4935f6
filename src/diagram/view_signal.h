#pragma once

#include <gdkmm/pixbuf.h>

#include <map>

#include "diagram/anchor.h"
#include "diagram/view_object.h"
#include "runtime/scoped_connection.h"
#include "track/signal.h"

namespace zemblar {

/// The picture of a signal: the picture of its current state, with the same pixel size at any zoom,
/// rotated by an angle. If there is no picture, or it cannot be loaded, a disc is shown, so that
/// the signal can be clicked.
///
/// A click on the operating display sets the next state, and after the last one the first.
///
/// In a layout file: `signal`, `pos`, `angle` in degrees and `anchor`.
class ViewSignal : public ViewObj {
 public:
  using Anchor = zemblar::Anchor;

  /// A new one at a place.
  ViewSignal(Signal& signal, const Vector& place);
  explicit ViewSignal(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] zemblar::Object* get_object() const override { return signal_; }
  [[nodiscard]] PixelBox runtime_box(const Context& context) override;
  void draw_runtime_tags(const Context& context, SelectionTable& table) override;
  void click(const ViewTag& tag, bool insists) override;
  void show_menu(const ViewTag& tag, guint32 time) override;

  [[nodiscard]] Anchor get_anchor() const { return anchor_; }
  void set_anchor(Anchor anchor);
  /// In degrees, clockwise.
  [[nodiscard]] double get_angle() const { return angle_; }
  void set_angle(double angle);

  Glib::PropertyProxy<int> property_anchor() { return {this, "anchor"}; }
  Glib::PropertyProxy<double> property_angle() { return {this, "angle"}; }

 protected:
  void move_by(const Vector& delta) override { pos_ = on_grid(pos_ + delta, 0); }
  [[nodiscard]] Vector get_place() override { return pos_; }
  void draw_plain(const Context& context, bool selected) override;
  void draw_live(const Context& context) override { draw_plain(context, false); }
  void draw_body_tags(const Context& context, bool selected, SelectionTable& table) override;

 private:
  ViewSignal();
  void attach(Signal& signal);
  void follow_pictures();
  [[nodiscard]] int get_anchor_number() const { return static_cast<int>(anchor_); }
  void set_anchor_number(int anchor);
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixbuf>& picture();
  /// The size of the picture or disc in pixels.
  [[nodiscard]] Vector picture_size();
  /// Makes the context draw in pixels from the top left corner of the rotated picture.
  void move_to_picture(const Context& context);
  void draw_disc(const Context& context);

  Signal* signal_ = nullptr;
  Vector pos_;
  double angle_ = 0;
  Anchor anchor_ = Anchor::Centre;
  std::map<std::string, Glib::RefPtr<Gdk::Pixbuf>> pictures_;  // by path; null if loading failed
  ScopedConnection state_changed_;
  ScopedConnection state_added_;
  ScopedConnection state_removed_;
  std::vector<ScopedConnection> images_changed_;
};

}  // namespace zemblar

#pragma once

#include <gdkmm/color.h>

#include <string>

#include "core/object.h"
#include "diagram/background_image.h"

namespace zemblar {

/// One track diagram: a canvas with a colour and perhaps a picture to draw over.
///
/// Diagram units are pixels at zoom 1. The table size is not written to the file: it is set again
/// from the picture, if there is one, and by hand otherwise.
class View : public Object {
 public:
  View();
  explicit View(const YAML::Node& node);

  [[nodiscard]] const Gdk::Color& get_colour() const { return colour_; }
  void set_colour(const Gdk::Color& colour);
  /// A hidden view has no page in the track view. Editors show it all the same.
  [[nodiscard]] bool get_hidden() const { return hidden_; }
  void set_hidden(bool hidden);
  [[nodiscard]] double get_width() const { return width_; }
  void set_width(double width);
  [[nodiscard]] double get_height() const { return height_; }
  void set_height(double height);

  [[nodiscard]] const BackgroundImage& image() const { return image_; }
  /// Loads the picture and grows the table so that it holds the whole of it. An empty path takes
  /// the picture away; a file that cannot be loaded is named in the status line.
  void set_image(const std::string& path);
  /// Where the picture's left upper corner lies on the table.
  [[nodiscard]] unsigned image_x() const { return image_x_; }
  [[nodiscard]] unsigned image_y() const { return image_y_; }

  void save(YAML::Emitter& out) const override;

  Glib::PropertyProxy<Gdk::Color> property_colour() { return {this, "colour"}; }
  Glib::PropertyProxy<bool> property_hidden() { return {this, "hidden"}; }
  Glib::PropertyProxy<double> property_width() { return {this, "width"}; }
  Glib::PropertyProxy<double> property_height() { return {this, "height"}; }

  sigc::signal<void>& signal_image_changed() { return signal_image_changed_; }
  /// Every display of this view has to draw it again.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void fit_to_image(double& extent, unsigned& offset, int image_extent, const char* property);

  BackgroundImage image_;
  Gdk::Color colour_;
  unsigned image_x_ = 0;
  unsigned image_y_ = 0;
  double height_ = 0;
  double width_ = 0;
  bool hidden_ = false;
  sigc::signal<void> signal_image_changed_;
  sigc::signal<void> signal_changed_;
};

}  // namespace zemblar

#pragma once

#include <gdkmm/color.h>

#include <string>
#include <vector>

#include "core/object.h"
#include "core/object_numbers.h"
#include "diagram/background_image.h"
#include "diagram/view_object.h"

namespace zemblar {

/// One track diagram: a table (drawing area) with a colour and perhaps a background picture.
///
/// It owns its diagram objects, each of which shows an object of the layout. After reading a file,
/// diagram objects whose layout object is missing are dropped, and the status line says so.
///
/// Diagram units are pixels at zoom 1. The size of the table is not saved: it follows from the
/// picture, if there is one, and is otherwise set by the user.
class View : public Object {
 public:
  View();
  explicit View(const YAML::Node& node);

  /// The contrasting grey level for text on the colour: 0 for black or 1 for white.
  [[nodiscard]] double get_ink() const;
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
  /// Loads the picture and enlarges the table to hold all of it. An empty path removes the picture.
  /// The status line names a file that cannot be loaded.
  void set_image(const std::string& path) { set_picture(PicturePath(path)); }
  void set_picture(const PicturePath& picture);
  /// Position of the picture's top left corner on the table.
  [[nodiscard]] unsigned image_x() const { return image_x_; }
  [[nodiscard]] unsigned image_y() const { return image_y_; }

  using Objects = std::vector<Glib::RefPtr<ViewObj>>;
  /// The diagram objects in the order of drawing (z-order), the first at the bottom.
  [[nodiscard]] const Objects& get_objects() const { return objects_; }
  /// Adds the object on top of the others and takes ownership.
  void add_object(ViewObj* object);
  /// The same at an index in the order of drawing; a larger one means on top.
  void insert_object(ViewObj* object, std::size_t place);
  /// Removes and ends the diagram object; the layout object that it shows stays.
  void remove_object(ViewObj* object);
  void move_to_top(ViewObj* object);
  void move_to_bottom(ViewObj* object);
  void move_to(ViewObj* object, std::size_t place);
  /// The object's index in the order of drawing, from 0; `get_objects().size()` for an object of
  /// another view.
  [[nodiscard]] std::size_t place_of(const ViewObj* object) const;

  /// Sets how entries of diagram objects refer to each other: by these numbers, or for null by the
  /// index in the view, as in files.
  static void use_numbers(NumberTable<ViewObj>* numbers) { numbers_ = numbers; }
  [[nodiscard]] unsigned number_of(const ViewObj* object) const;
  /// The object with that number, or null.
  [[nodiscard]] ViewObj* find_number(unsigned number) const;
  /// Requests a redraw of one object, or of everything for null. Emits `signal_changed`;
  /// `changed_object` returns the object meanwhile.
  void object_changed(ViewObj* object);
  /// While `signal_changed` is emitted: the only object that has changed; null when anything may
  /// have changed.
  [[nodiscard]] ViewObj* changed_object() const { return changed_object_; }

  void save(YAML::Emitter& out) const override;
  /// Writes the view's entry without the diagram objects.
  void save_alone(YAML::Emitter& out) const;
  void restore(const EntryChange& change) override;
  bool save_part(YAML::Emitter& out, unsigned part) const override;

  Glib::PropertyProxy<Gdk::Color> property_colour() { return {this, "colour"}; }
  Glib::PropertyProxy<bool> property_hidden() { return {this, "hidden"}; }
  Glib::PropertyProxy<double> property_width() { return {this, "width"}; }
  Glib::PropertyProxy<double> property_height() { return {this, "height"}; }

  sigc::signal<void>& signal_image_changed() { return signal_image_changed_; }
  /// Every display of this view must draw it again.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  sigc::signal<void, ViewObj*>& signal_object_added() { return signal_object_added_; }
  sigc::signal<void, ViewObj*>& signal_object_removed() { return signal_object_removed_; }

 protected:
  void on_deleting() override;

 private:
  void save_start(YAML::Emitter& out) const;
  void read_objects(const YAML::Node& entries);
  void drop_incomplete_objects();
  void save_settings(YAML::Emitter& out) const;
  void fit_to_image(double& extent, unsigned& offset, int image_extent, const char* property);

  static inline NumberTable<ViewObj>* numbers_ = nullptr;

  BackgroundImage image_;
  Gdk::Color colour_;
  unsigned image_x_ = 0;
  unsigned image_y_ = 0;
  double height_ = 0;
  double width_ = 0;
  bool hidden_ = false;
  sigc::signal<void> signal_image_changed_;
  sigc::signal<void> signal_changed_;
  sigc::signal<void, ViewObj*> signal_object_added_;
  sigc::signal<void, ViewObj*> signal_object_removed_;
  ViewObj* changed_object_ = nullptr;
  Objects objects_;
};

}  // namespace zemblar

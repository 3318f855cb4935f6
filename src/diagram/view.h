#pragma once

#include <gdkmm/color.h>

#include <string>
#include <vector>

#include "core/object.h"
#include "core/object_numbers.h"
#include "diagram/background_image.h"
#include "diagram/view_object.h"

namespace zemblar {

/// One track diagram: a canvas with a colour and perhaps a picture to draw over.
///
/// It owns its diagram objects, which show objects of the layout; an object whose own is not in the
/// file is dropped when all has been read, and the status line says so.
///
/// Diagram units are pixels at zoom 1. The table size is not written to the file: it is set again
/// from the picture, if there is one, and by hand otherwise.
class View : public Object {
 public:
  View();
  explicit View(const YAML::Node& node);

  /// Black or white, whichever can be read on the colour.
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
  /// Loads the picture and grows the table so that it holds the whole of it. An empty path takes
  /// the picture away; a file that cannot be loaded is named in the status line.
  void set_image(const std::string& path) { set_picture(PicturePath(path)); }
  void set_picture(const PicturePath& picture);
  /// Where the picture's left upper corner lies on the table.
  [[nodiscard]] unsigned image_x() const { return image_x_; }
  [[nodiscard]] unsigned image_y() const { return image_y_; }

  using Objects = std::vector<Glib::RefPtr<ViewObj>>;
  /// In the order of drawing, the first at the bottom.
  [[nodiscard]] const Objects& get_objects() const { return objects_; }
  /// On top of the others. The view owns it from now on.
  void add_object(ViewObj* object);
  /// The same at a place in the order of drawing; on top when there are fewer.
  void insert_object(ViewObj* object, std::size_t place);
  /// Ends it; what it shows stays.
  void remove_object(ViewObj* object);
  void move_to_top(ViewObj* object);
  void move_to_bottom(ViewObj* object);
  void move_to(ViewObj* object, std::size_t place);
  /// Its place in the order of drawing, counted from 0; `get_objects().size()` for none of these.
  [[nodiscard]] std::size_t place_of(const ViewObj* object) const;

  /// How entries of diagram objects refer to each other from now on: by these numbers, or for null
  /// by their place, as in files.
  static void use_numbers(NumberTable<ViewObj>* numbers) { numbers_ = numbers; }
  [[nodiscard]] unsigned number_of(const ViewObj* object) const;
  /// Null for none.
  [[nodiscard]] ViewObj* find_number(unsigned number) const;
  /// One object has to be drawn again, or everything: `signal_changed` comes, and
  /// `changed_object` says which meanwhile.
  void object_changed(ViewObj* object);
  /// While `signal_changed` is emitted: the only object that has changed; null when it may be
  /// anything.
  [[nodiscard]] ViewObj* changed_object() const { return changed_object_; }

  void save(YAML::Emitter& out) const override;
  /// Its entry without the objects.
  void save_alone(YAML::Emitter& out) const;
  void restore(const EntryChange& change) override;
  bool save_part(YAML::Emitter& out, unsigned part) const override;

  Glib::PropertyProxy<Gdk::Color> property_colour() { return {this, "colour"}; }
  Glib::PropertyProxy<bool> property_hidden() { return {this, "hidden"}; }
  Glib::PropertyProxy<double> property_width() { return {this, "width"}; }
  Glib::PropertyProxy<double> property_height() { return {this, "height"}; }

  sigc::signal<void>& signal_image_changed() { return signal_image_changed_; }
  /// Every display of this view has to draw it again.
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

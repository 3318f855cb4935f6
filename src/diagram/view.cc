#include "diagram/view.h"

#include <yaml-cpp/yaml.h>

#include <cmath>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "diagram/colour.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<View>("!view", Section::views));
const ToplevelAccepts acceptance = toplevel_accepts_class<View>(Section::views);

/// No class of diagram objects has been registered, so every entry has an unknown tag.
void read_objects(const YAML::Node& entries) {
  for (const auto& entry : entries) {
    throw YAML::RepresentationException(
        entry.Mark(), Glib::ustring::compose("Unimplemented Load: %1", entry.Tag()));
  }
}

}  // namespace

View::View() : Glib::ObjectBase("View"), Object(_("View %1")), colour_("white") {
  register_property<Gdk::Color>(this, "colour", &View::get_colour, &View::set_colour);
  register_property<bool>(this, "hidden", &View::get_hidden, &View::set_hidden);
  register_property<double>(this, "width", &View::get_width, &View::set_width);
  register_property<double>(this, "height", &View::get_height, &View::set_height);
}

View::View(const YAML::Node& node) : View() {
  load_identity(node);
  if (const auto colour = node["colour"]) colour >> colour_;
  std::string path;
  if (const auto image = node["image"]; image && !image.IsNull()) image >> path;
  set_image(path);
  read_key(node, "hidden", hidden_);
  if (const auto objects = node["objects"]) read_objects(objects);
}

void View::set_colour(const Gdk::Color& colour) {
  if (colour == colour_) return;
  colour_ = colour;
  notify_property(*this, "colour");
}

void View::set_hidden(bool hidden) {
  if (hidden == hidden_) return;
  hidden_ = hidden;
  notify_property(*this, "hidden");
}

void View::set_width(double width) {
  if (width == width_) return;
  width_ = width;
  notify_property(*this, "width");
}

void View::set_height(double height) {
  if (height == height_) return;
  height_ = height;
  notify_property(*this, "height");
}

void View::set_image(const std::string& path) {
  image_.load(path);
  signal_image_changed_.emit();
  signal_changed_.emit();
  if (!image_.pixbuf()) return;
  fit_to_image(width_, image_x_, image_.width(), "width");
  fit_to_image(height_, image_y_, image_.height(), "height");
}

void View::fit_to_image(double& extent, unsigned& offset, int image_extent, const char* property) {
  if (extent < image_extent) {
    extent = image_extent;
    offset = 0;
  } else if (extent < image_extent + static_cast<double>(offset)) {
    offset = static_cast<unsigned>(std::lround(extent)) - static_cast<unsigned>(image_extent);
  } else {
    return;
  }
  notify_property(*this, property);
}

void View::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view") << YAML::BeginMap;
  save_identity(out);
  out << YAML::Key << "colour" << YAML::Value << colour_;
  out << YAML::Key << "image" << YAML::Value << image_.path();
  out << YAML::Key << "hidden" << YAML::Value << hidden_;
  out << YAML::EndMap;
}

}  // namespace zemblar

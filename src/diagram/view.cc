#include "diagram/view.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/change_count.h"
#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/status.h"
#include "core/yaml_io.h"
#include "diagram/colour.h"
#include "diagram/diagram_watcher.h"
#include "diagram/view_class.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<View>("!view", Section::views));
const ToplevelAccepts acceptance = toplevel_accepts_class<View>(Section::views);

// Writing so many takes some hundred microseconds.
constexpr std::size_t objects_per_part = 32;

Glib::RefPtr<ViewObj> hold(ViewObj* object) {
  object->reference();
  return Glib::RefPtr<ViewObj>(object);
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
  PicturePath image;
  read_picture(node, "image", image);
  set_picture(image);
  read_private(node, "width", width_);
  read_private(node, "height", height_);
  read_key(node, "hidden", hidden_);
  if (const auto objects = node["objects"]) read_objects(objects);
}

// Indexes in the file count all objects, so incomplete ones are dropped only after references
// between objects are resolved.
void View::read_objects(const YAML::Node& entries) {
  for (const auto& entry : entries) {
    const auto* view_class = ViewClass::find(entry.Tag());
    if (!view_class) {
      throw YAML::RepresentationException(
          entry.Mark(), Glib::ustring::compose("Unimplemented Load: %1", entry.Tag()));
    }
    add_object(view_class->load(entry));
  }
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        drop_incomplete_objects();
        return true;
      },
      *this));
}

void View::drop_incomplete_objects() {
  const auto objects = objects_;
  unsigned dropped = 0;
  for (const auto& object : objects) {
    if (object->get_object()) continue;
    ++dropped;
    remove_object(object.operator->());
  }
  if (dropped == 0) return;
  set_status(Glib::ustring::compose(
      dngettext(GETTEXT_PACKAGE,
                "%1 object in “%2” shows something that is not in the file and was left out.",
                "%1 objects in “%2” show something that is not in the file and were left out.",
                dropped),
      dropped, get_name()));
}

void View::on_deleting() {
  while (!objects_.empty()) remove_object(objects_.back().operator->());
}

// --- Objects ---

void View::add_object(ViewObj* object) {
  insert_object(object, objects_.size());
}

void View::insert_object(ViewObj* object, std::size_t place) {
  const auto at = static_cast<std::ptrdiff_t>(std::min(place, objects_.size()));
  ChangeCount::add(Change::structure);
  objects_.insert(objects_.begin() + at, Glib::RefPtr<ViewObj>(object));
  object->set_view(this);
  if (auto* watcher = DiagramWatcher::get()) watcher->added(*object);
}

void View::remove_object(ViewObj* object) {
  if (place_of(object) == objects_.size()) return;
  auto* watcher = DiagramWatcher::get();
  if (watcher) watcher->before_removal(*object);
  const auto held = hold(object);
  object->on_leaving();
  std::erase(objects_, held);
  ChangeCount::add(Change::structure);
  object->set_view(nullptr);
  if (watcher) watcher->removed(*object);
  object_changed(nullptr);
}

std::size_t View::place_of(const ViewObj* object) const {
  return static_cast<std::size_t>(
      std::ranges::find(objects_, object, [](auto& one) { return one.operator->(); }) -
      objects_.begin());
}

void View::move_to_top(ViewObj* object) {
  move_to(object, objects_.size());
}

void View::move_to_bottom(ViewObj* object) {
  move_to(object, 0);
}

void View::move_to(ViewObj* object, std::size_t place) {
  if (place_of(object) == objects_.size()) return;
  if (auto* watcher = DiagramWatcher::get()) watcher->before_move(*object);
  const auto held = hold(object);
  ChangeCount::add(Change::structure);
  std::erase(objects_, held);
  const auto at = static_cast<std::ptrdiff_t>(std::min(place, objects_.size()));
  objects_.insert(objects_.begin() + at, held);
  object_changed(nullptr);
}

unsigned View::number_of(const ViewObj* object) const {
  return numbers_ ? numbers_->number_of(object) : static_cast<unsigned>(place_of(object));
}

ViewObj* View::find_number(unsigned number) const {
  if (numbers_) return numbers_->find(number);
  return number < objects_.size() ? objects_[number].operator->() : nullptr;
}

void View::object_changed(ViewObj* object) {
  ChangeCount::add(Change::state);
  auto* const outer = std::exchange(changed_object_, object);
  signal_changed_.emit();
  changed_object_ = outer;
}

// --- Colour and size ---

void View::set_colour(const Gdk::Color& colour) {
  if (colour == colour_) return;
  before_change();
  colour_ = colour;
  notify_property(*this, "colour");
}

double View::get_ink() const {
  const double luminance =
      0.299 * colour_.get_red_p() + 0.587 * colour_.get_green_p() + 0.114 * colour_.get_blue_p();
  return luminance > 0.5 ? 0.0 : 1.0;
}

void View::set_hidden(bool hidden) {
  if (hidden == hidden_) return;
  before_change();
  hidden_ = hidden;
  notify_property(*this, "hidden");
}

void View::set_width(double width) {
  if (width == width_) return;
  before_change();
  width_ = width;
  notify_property(*this, "width");
}

void View::set_height(double height) {
  if (height == height_) return;
  before_change();
  height_ = height;
  notify_property(*this, "height");
}

void View::set_picture(const PicturePath& picture) {
  before_change();
  image_.load(picture);
  signal_image_changed_.emit();
  object_changed(nullptr);
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
  unsigned part = 0;
  while (save_part(out, part)) ++part;
}

bool View::save_part(YAML::Emitter& out, unsigned part) const {
  if (part == 0) save_start(out);
  const auto first = std::min(part * objects_per_part, objects_.size());
  const auto last = std::min(first + objects_per_part, objects_.size());
  for (auto i = first; i < last; ++i) objects_[i]->save(out);
  if (last < objects_.size()) return true;
  if (!objects_.empty()) out << YAML::EndSeq;
  out << YAML::EndMap;
  return false;
}

void View::save_start(YAML::Emitter& out) const {
  out << YAML::LocalTag("view") << YAML::BeginMap;
  save_settings(out);
  if (!objects_.empty()) out << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
}

void View::save_settings(YAML::Emitter& out) const {
  save_identity(out);
  out << YAML::Key << "colour" << YAML::Value << colour_;
  out << YAML::Key << "image" << YAML::Value;
  // In the private form the path is kept although the picture is missing, so that undo or a
  // recovery copy finds a picture that has been put back.
  out << (PrivateForm::is_used() ? image_.wanted() : image_.picture());
  out << YAML::Key << "hidden" << YAML::Value << hidden_;
  write_private(out, "width", shortest_text(width_));
  write_private(out, "height", shortest_text(height_));
}

void View::save_alone(YAML::Emitter& out) const {
  out << YAML::LocalTag("view") << YAML::BeginMap;
  save_settings(out);
  out << YAML::EndMap;
}

void View::restore(const EntryChange& change) {
  Object::restore(change);
  if (change.differs("colour")) {
    Gdk::Color colour;
    change.at("colour") >> colour;
    set_colour(colour);
  }
  if (change.differs("image")) {
    PicturePath image;
    read_picture(change.entry(), "image", image);
    set_picture(image);
  }
  change.read<bool>("hidden", [this](bool hidden) { set_hidden(hidden); });
  change.read<double>("width", [this](double width) { set_width(width); });
  change.read<double>("height", [this](double height) { set_height(height); });
}

}  // namespace zemblar

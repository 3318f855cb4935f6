#include "diagram/view_signal.h"

#include <gdkmm/general.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/property.h"
#include "core/status.h"
#include "diagram/background_image.h"
#include "diagram/view_class.h"
#include "diagram/view_menu.h"
#include "diagram/view_track.h"

namespace zemblar {
namespace {

constexpr double disc_size = 16.0;
constexpr double disc_rim = 2.0;

struct Colour {
  double red, green, blue;
};
/// Colours for the first, the second and all further states.
constexpr std::array<Colour, 3> disc_colours = {{{0.85, 0, 0}, {0, 0.7, 0}, {1, 0.8, 0}}};

const ViewClass::Registration registration(
    view_class<ViewSignal, Signal>("!view-signal", Section::points,
                                   {.place = 4,
                                    .icon = "orvane-signal",
                                    .label = N_("Signal"),
                                    .name = N_("_Signal"),
                                    .add_new = N_("Add New Signal"),
                                    .add_existing = N_("Add Existing Signal"),
                                    .heading = N_("Signals")}));

}  // namespace

ViewSignal::ViewSignal() : Glib::ObjectBase("ViewSignal") {
  register_property<int>(this, "anchor", &ViewSignal::get_anchor_number,
                         &ViewSignal::set_anchor_number);
  register_property<double>(this, "angle", &ViewSignal::get_angle, &ViewSignal::set_angle);
}

ViewSignal::ViewSignal(Signal& signal, const Vector& place) : ViewSignal() {
  pos_ = place;
  attach(signal);
}

ViewSignal::ViewSignal(const YAML::Node& node) : ViewSignal() {
  load_shown<Signal>(node, "signal", [this](Signal& signal) { attach(signal); });
  required(node, "pos") >> pos_;
  pos_ = within_diagram(pos_);
  required(node, "angle") >> angle_;
  required(node, "anchor") >> anchor_;
}

void ViewSignal::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-signal") << YAML::BeginMap;
  out << YAML::Key << "signal" << YAML::Value << static_cast<const zemblar::Object*>(signal_);
  out << YAML::Key << "pos" << YAML::Value << pos_;
  out << YAML::Key << "angle" << YAML::Value << shortest_text(angle_);
  out << YAML::Key << "anchor" << YAML::Value << anchor_;
  out << YAML::EndMap;
}

void ViewSignal::set_anchor(Anchor anchor) {
  if (anchor == anchor_) return;
  before_change();
  anchor_ = anchor;
  notify_property(*this, "anchor");
  changed();
}

void ViewSignal::set_anchor_number(int anchor) {
  if (anchor >= 0 && anchor < anchor_count) set_anchor(static_cast<Anchor>(anchor));
}

void ViewSignal::set_angle(double angle) {
  if (angle == angle_) return;
  before_change();
  angle_ = angle;
  notify_property(*this, "angle");
  changed();
}

// --- What it shows ---

void ViewSignal::attach(Signal& signal) {
  signal_ = &signal;
  follow_end(signal);
  state_changed_ = signal.signal_state_changed().connect([this] { changed(); });
  state_added_ = signal.signal_child_added().connect(
      sigc::hide(sigc::mem_fun(*this, &ViewSignal::follow_pictures)));
  // The colour of a disc depends on the index of the state, so it may change.
  state_removed_ = signal.signal_child_removed().connect([this](zemblar::Object*) { changed(); });
  follow_pictures();
}

void ViewSignal::follow_pictures() {
  images_changed_.clear();
  for (auto* state : signal_->states()) {
    auto& shown = dynamic_cast<SignalState&>(*state);
    images_changed_.emplace_back(shown.property_image().signal_changed().connect([this] {
      pictures_.clear();
      changed();
    }));
  }
}

// Loads the picture when it is first drawn. A text that is in the status line then is more
// important than a failure to load.
const Glib::RefPtr<Gdk::Pixbuf>& ViewSignal::picture() {
  static const Glib::RefPtr<Gdk::Pixbuf> none;
  const auto* state = signal_ ? dynamic_cast<SignalState*>(signal_->get_state()) : nullptr;
  if (!state || state->get_image().empty()) return none;
  const auto [entry, is_new] = pictures_.try_emplace(state->get_image());
  if (is_new) {
    const auto present = get_status();
    BackgroundImage image;
    image.load(state->picture());
    if (!present.empty() && get_status() != present) set_status(present);
    entry->second = image.pixbuf();
  }
  return entry->second;
}

Vector ViewSignal::picture_size() {
  const auto& shown = picture();
  if (!shown) return {disc_size, disc_size};
  return {static_cast<double>(shown->get_width()), static_cast<double>(shown->get_height())};
}

void ViewSignal::click(const ViewTag& /*tag*/, bool /*insists*/) {
  if (!signal_) return;
  const auto states = signal_->states();
  if (states.empty()) return;
  const auto current = std::ranges::find(states, signal_->get_state());
  const bool last = current == states.end() || current + 1 == states.end();
  signal_->set_state(last ? states.front() : *(current + 1));
}

void ViewSignal::show_menu(const ViewTag& /*tag*/, guint32 time) {
  auto menu = std::make_unique<Gtk::Menu>();
  add_order_items(*menu, *this);
  popup(std::move(menu), time);
}

// --- Drawing ---

// Switches to pixels of the canvas, so that the picture keeps its size at any zoom.
void ViewSignal::move_to_picture(const Context& context) {
  auto place = pos_;
  context->user_to_device(place.x, place.y);
  context->set_identity_matrix();
  context->translate(place.x, place.y);
  context->rotate_degrees(std::fmod(angle_, 360));
  const auto size = picture_size();
  const auto offset = anchor_offset(anchor_, size.x, size.y);
  context->translate(offset.x, offset.y);
}

void ViewSignal::draw_plain(const Context& context, bool selected) {
  context->save();
  move_to_picture(context);
  if (const auto& shown = picture()) {
    Gdk::Cairo::set_source_pixbuf(context, shown, 0, 0);
    context->paint();
  } else {
    draw_disc(context);
  }
  if (selected) {
    const auto size = picture_size();
    context->rectangle(-0.5, -0.5, size.x + 1, size.y + 1);
    context->set_source_rgb(0.25, 0.25, 1.0);
    context->set_line_width(1);
    context->stroke();
  }
  context->restore();
}

void ViewSignal::draw_disc(const Context& context) {
  const auto* state = signal_ ? signal_->get_state() : nullptr;
  const auto position = state ? static_cast<std::size_t>(std::max(state->get_position(), 0)) : 0;
  const auto& colour = disc_colours.at(std::min(position, disc_colours.size() - 1));
  context->begin_new_path();
  context->arc(disc_size / 2, disc_size / 2, (disc_size - disc_rim) / 2, 0, 2 * M_PI);
  context->set_source_rgb(colour.red, colour.green, colour.blue);
  context->fill_preserve();
  context->set_source_rgb(0.1, 0.1, 0.1);
  context->set_line_width(disc_rim);
  context->stroke();
}

PixelBox ViewSignal::runtime_box(const Context& context) {
  context->save();
  move_to_picture(context);
  const auto size = picture_size();
  PixelBox box;
  for (const auto& corner : {Vector{0, 0}, Vector{size.x, 0}, Vector{0, size.y}, size}) {
    auto point = corner;
    context->user_to_device(point.x, point.y);
    box = box.united({point.x - 1, point.y - 1, point.x + 1, point.y + 1});
  }
  context->restore();
  return box;
}

void ViewSignal::draw_runtime_tags(const Context& context, SelectionTable& table) {
  draw_body_tags(context, false, table);
}

void ViewSignal::draw_body_tags(const Context& context, bool /*selected*/, SelectionTable& table) {
  add_tag(context, table, std::make_shared<ViewTag>(this));
  context->save();
  move_to_picture(context);
  const auto size = picture_size();
  context->begin_new_path();
  context->rectangle(0, 0, size.x, size.y);
  context->fill();
  context->restore();
}

}  // namespace zemblar

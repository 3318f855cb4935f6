#include "diagram/view_label.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "diagram/view.h"
#include "diagram/view_class.h"
#include "diagram/view_menu.h"
#include "diagram/view_track.h"
#include "locomotives/lok.h"
#include "track/train_condition.h"

namespace zemblar {
namespace {

constexpr auto name_font = "Sans 16";
constexpr auto note_font = "Sans Bold 10";
constexpr int highest_step = 126;
constexpr double empty_grey = 0.5;
using Rgb = std::array<double, 3>;
constexpr Rgb note_on_light{0.72, 0.25, 0};
constexpr Rgb note_on_dark{1, 0.7, 0.2};

const ViewClass::Registration registration(view_class<ViewLabel, Zone>(
    "!view-label", Section::blocks,
    {.place = 5,
     .icon = "orvane-label",
     .label = N_("Label"),
     .name = N_("_Label"),
     .add_new = N_("Add Label for New Zone"),
     .add_existing = N_("Add Label for Existing Zone"),
     .heading = N_("Zones"),
     .how_to_make = N_("There is no zone yet. Draw one first, with the tool Zone."),
     .takes_existing = true}));

std::string in_capitals(Anchor anchor) {
  std::string text = anchor_name(anchor);
  for (auto& c : text) c = g_ascii_toupper(c);
  return text;
}

Anchor read_align(const YAML::Node& node) {
  const auto& text = scalar_of(node);
  for (int i = 0; i < anchor_count; ++i) {
    const auto anchor = static_cast<Anchor>(i);
    if (anchor != Anchor::Centre && in_capitals(anchor) == text) return anchor;
  }
  throw YAML::InvalidScalar(node.Mark());
}

}  // namespace

ViewLabel::ViewLabel() : Glib::ObjectBase("ViewLabel") {
  register_property<int>(this, "align", &ViewLabel::get_align_number, &ViewLabel::set_align_number);
}

ViewLabel::ViewLabel(Zone& zone, const Vector& place) : ViewLabel() {
  pos_ = place;
  attach(zone);
}

ViewLabel::ViewLabel(const YAML::Node& node) : ViewLabel() {
  load_shown<Zone>(node, "zone", [this](Zone& zone) { attach(zone); });
  required(node, "pos") >> pos_;
  pos_ = within_diagram(pos_);
  align_ = read_align(required(node, "align"));
}

void ViewLabel::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-label") << YAML::BeginMap;
  out << YAML::Key << "zone" << YAML::Value << static_cast<const zemblar::Object*>(zone_);
  out << YAML::Key << "pos" << YAML::Value << pos_;
  out << YAML::Key << "align" << YAML::Value << in_capitals(align_);
  out << YAML::EndMap;
}

void ViewLabel::set_align(Anchor align) {
  if (align == align_ || align == Anchor::Centre) return;
  before_change();
  align_ = align;
  notify_property(*this, "align");
  changed();
}

void ViewLabel::set_align_number(int align) {
  if (align >= 0 && align < anchor_count) set_align(static_cast<Anchor>(align));
}

void ViewLabel::show_menu(const ViewTag& /*tag*/, guint32 time) {
  auto menu = std::make_unique<Gtk::Menu>();
  add_order_items(*menu, *this);
  popup(std::move(menu), time);
}

// --- What it says ---

void ViewLabel::attach(Zone& zone) {
  zone_ = &zone;
  follow_end(zone);
  lok_changed_ = zone.signal_lok_changed().connect([this] { follow_lok(); });
  renamed_ = zone.property_name().signal_changed().connect([this] { changed(); });
  pulse_ = Layout::get().signal_pulse().connect([this] { follow(); });
  // An editor that is placing the label may hold it after the zone has ended.
  zone_ended_ = zone.signal_deleted().connect([this] {
    pulse_.disconnect();
    lok_signals_.clear();
  });
  follow_lok();
}

void ViewLabel::follow_lok() {
  lok_signals_.clear();
  if (auto* lok = zone_->get_lok()) {
    const auto follow = [this] { this->follow(); };
    lok_signals_.emplace_back(lok->signal_actual_speed_changed().connect(follow));
    lok_signals_.emplace_back(lok->signal_top_speed_changed().connect(follow));
    lok_signals_.emplace_back(lok->property_name().signal_changed().connect(follow));
  }
  follow();
}

void ViewLabel::follow() {
  auto text = live_text();
  auto note = zone_note(*zone_);
  if (text.raw() == text_.raw() && note.raw() == note_.raw()) return;
  text_ = std::move(text);
  note_ = std::move(note);
  changed();
}

Glib::ustring ViewLabel::live_text() const {
  const auto* lok = zone_->get_lok();
  if (!lok) return {};
  if (lok->get_actual_speed() < 0) return lok->get_name();
  const double speed =
      static_cast<double>(lok->get_actual_speed()) * lok->get_top_speed() / highest_step;
  return Glib::ustring::compose(_("%1\nActual Speed: %2"), lok->get_name(),
                                Glib::ustring::compose(_("%1 km/h"), std::lround(speed)));
}

// --- Drawing ---

ViewLabel::TextBlock ViewLabel::lay_out(const Context& context, const Glib::ustring& text,
                                        const char* font) {
  TextBlock block;
  block.layout = Pango::Layout::create(context);
  block.layout->set_font_description(Pango::FontDescription(font));
  block.layout->set_text(text);
  const auto extents = block.layout->get_pixel_logical_extents();
  block.size = {static_cast<double>(extents.get_width()),
                static_cast<double>(extents.get_height())};
  return block;
}

ViewLabel::TextBlock ViewLabel::name_block(const Context& context,
                                           const Glib::ustring& text) const {
  auto block = lay_out(context, text, name_font);
  block.corner = pos_ + anchor_offset(align_, block.size.x, block.size.y);
  return block;
}

// Puts the note on the side of the name away from the place, where the track is.
ViewLabel::TextBlock ViewLabel::note_block(const Context& context, const TextBlock& name) const {
  auto block = lay_out(context, note_, note_font);
  const auto spare = name.size.x - block.size.x;
  const auto middle = name.corner + name.size * 0.5;
  const bool is_above = middle.y < pos_.y;
  block.corner = {name.corner.x + (middle.x < pos_.x   ? spare
                                   : middle.x > pos_.x ? 0
                                                       : spare / 2),
                  is_above ? name.corner.y - block.size.y : name.corner.y + name.size.y};
  return block;
}

void ViewLabel::draw_words(const Context& context, const TextBlock& block) {
  context->move_to(block.corner.x, block.corner.y);
  block.layout->show_in_cairo_context(context);
}

void ViewLabel::draw_live(const Context& context) {
  if (text_.empty()) return;
  const double ink = get_view() ? get_view()->get_ink() : 0;
  context->set_source_rgb(ink, ink, ink);
  const auto name = name_block(context, text_);
  draw_words(context, name);
  if (note_.empty()) return;
  const auto& colour = ink > 0 ? note_on_dark : note_on_light;
  context->set_source_rgb(colour[0], colour[1], colour[2]);
  draw_words(context, note_block(context, name));
}

void ViewLabel::draw_plain(const Context& context, bool selected) {
  if (selected) {
    context->set_source_rgb(0.25, 0.25, 1.0);
  } else {
    context->set_source_rgb(empty_grey, empty_grey, empty_grey);
  }
  if (zone_) draw_words(context, name_block(context, zone_->get_name()));
}

PixelBox ViewLabel::runtime_box(const Context& context) {
  if (text_.empty()) return {};
  const auto name = name_block(context, text_);
  auto corner = name.corner;
  auto far = name.corner + name.size;
  if (!note_.empty()) {
    const auto note = note_block(context, name);
    corner = {std::min(corner.x, note.corner.x), std::min(corner.y, note.corner.y)};
    far = {std::max(far.x, note.corner.x + note.size.x),
           std::max(far.y, note.corner.y + note.size.y)};
  }
  // At any zoom letters may extend a little beyond the text's logical box.
  constexpr double overhang = 4;
  context->user_to_device(corner.x, corner.y);
  context->user_to_device(far.x, far.y);
  Vector beyond{overhang, overhang};
  context->user_to_device_distance(beyond.x, beyond.y);
  beyond = {std::max(beyond.x, overhang), std::max(beyond.y, overhang)};
  return {corner.x - beyond.x, corner.y - beyond.y, far.x + beyond.x, far.y + beyond.y};
}

void ViewLabel::draw_body_tags(const Context& context, bool /*selected*/, SelectionTable& table) {
  if (!zone_) return;
  const auto name = name_block(context, zone_->get_name());
  add_tag(context, table, std::make_shared<ViewTag>(this));
  context->begin_new_path();
  context->rectangle(name.corner.x, name.corner.y, name.size.x, name.size.y);
  context->fill();
}

}  // namespace zemblar

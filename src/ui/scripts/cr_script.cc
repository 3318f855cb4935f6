#include "ui/scripts/cr_script.h"

#include <gdkmm/drawable.h>
#include <gdkmm/general.h>
#include <gdkmm/window.h>
#include <gtkmm/treeview.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/property.h"
#include "ui/toolkit/spin_button.h"

namespace zemblar {
namespace {

using Colour = std::array<double, 3>;  // red, green and blue, 0 to 1

constexpr int margin = 6;
constexpr int left_margin = 18;  // of the sentence; a lamp is in it
constexpr double lamp_radius = 4;
constexpr Colour lamp_colour = {0.16, 0.63, 0.16};
constexpr int least_note = 40;  // pixels; a narrower note is not drawn
constexpr int chip_margin = 3;  // around the chosen argument
// Colour fractions: what the text and the links of a sleeping line keep, and the share of the link
// colour in a link.
constexpr double dimmed_text = 0.65;
constexpr double dimmed_link = 0.8;
constexpr double own_link = 0.65;

/// Placeholder text for an argument whose editor is shown instead.
constexpr auto gap_text = "\uFFFC";

Colour from(const Gdk::Color& colour) {
  return {colour.get_red_p(), colour.get_green_p(), colour.get_blue_p()};
}

Colour mix(const Colour& a, const Colour& b, double part_of_a) {
  Colour mixed{};
  for (std::size_t i = 0; i < mixed.size(); ++i)
    mixed[i] = part_of_a * a[i] + (1 - part_of_a) * b[i];
  return mixed;
}

/// The link colour of the theme.
Colour link_colour(Gtk::Widget& widget) {
  GdkColor* given = nullptr;
  gtk_widget_style_get(widget.gobj(), "link-color", &given, nullptr);
  if (!given) return {0.11, 0.35, 0.66};
  const Colour colour = from(Gdk::Color(given, true));
  gdk_color_free(given);
  return colour;
}

void insert(Pango::AttrList& list, Pango::Attribute attribute, std::size_t begin, std::size_t end) {
  attribute.set_start_index(static_cast<unsigned>(begin));
  attribute.set_end_index(static_cast<unsigned>(end));
  list.insert(attribute);
}

void insert_colour(Pango::AttrList& list, const Colour& colour, std::size_t begin,
                   std::size_t end) {
  const auto part = [&colour](std::size_t i) { return static_cast<guint16>(colour[i] * 65535); };
  insert(list, Pango::Attribute::create_attr_foreground(part(0), part(1), part(2)), begin, end);
}

/// Makes a range of the text a gap of this width in pixels.
void insert_gap(Pango::AttrList& list, int width, std::size_t begin, std::size_t end) {
  const Pango::Rectangle room(0, 0, width * Pango::SCALE, Pango::SCALE);
  insert(list, Pango::Attribute::create_attr_shape(room, room), begin, end);
}

}  // namespace

/// The colours of one row.
struct CRScript::Look {
  Look(const CRScript& cell, Gtk::Widget& widget, Gtk::CellRendererState flags);
  [[nodiscard]] bool shows_chosen() const { return state == Gtk::STATE_SELECTED; }

  Gtk::StateType state = Gtk::STATE_NORMAL;
  Colour text;
  Colour link;
  Colour chosen;  // colour of the selected argument, on the background of unselected rows
};

CRScript::Look::Look(const CRScript& cell, Gtk::Widget& widget, Gtk::CellRendererState flags) {
  const bool selected = (flags & Gtk::CELL_RENDERER_SELECTED) != 0;
  // An open menu has the focus but belongs to the tree.
  const bool focused = widget.has_focus() || cell.menu_.is_open();
  if (selected) state = focused ? Gtk::STATE_SELECTED : Gtk::STATE_ACTIVE;
  const auto style = widget.get_style();
  const auto base = from(style->get_base(state));
  text = from(style->get_text(state));
  chosen = mix(link_colour(widget), from(style->get_text(Gtk::STATE_NORMAL)), own_link);
  link = selected ? text : chosen;
  if (selected || !(cell.row_.sleeps() || cell.row_.is_off())) return;
  text = mix(text, base, dimmed_text);
  link = mix(link, base, dimmed_link);
}

CRScript::CRScript() : Glib::ObjectBase("CRScript") {
  register_property<Type>(this, "type", &CRScript::get_type, &CRScript::set_type);
  register_property<Script*>(this, "script", &CRScript::get_script, &CRScript::set_script);
  register_property<ScriptLine*>(this, "script-line", &CRScript::get_line, &CRScript::set_line);
  register_property<unsigned>(this, "refresh", &CRScript::get_refresh, &CRScript::set_refresh);
  property_mode() = Gtk::CELL_RENDERER_MODE_EDITABLE;
}

CRScript::~CRScript() = default;

// --- The sentence on the screen ---

// Call when the editor is in the tree, where the theme may give it another size.
int CRScript::Editing::width() const {
  return editor->size_request().width - left;
}

std::optional<unsigned> CRScript::chosen_arg() const {
  const auto args = row_.editable_args();
  if (args.empty()) return std::nullopt;
  return args[std::min<std::size_t>(chosen_, args.size() - 1)];
}

Sentence CRScript::sentence() const {
  return is_editing() ? row_.sentence(editing_->arg, gap_text) : row_.sentence();
}

CRScript::Layout CRScript::lay_out(Gtk::Widget& widget, const Look& look) const {
  const auto sentence = this->sentence();
  Pango::AttrList attributes;
  insert_colour(attributes, look.text, 0, sentence.text().bytes());
  if (row_.is_off()) {
    insert(attributes, Pango::Attribute::create_attr_strikethrough(true), 0,
           sentence.text().bytes());
  } else if (row_.sleeps()) {
    insert(attributes, Pango::Attribute::create_attr_style(Pango::STYLE_ITALIC), 0,
           sentence.text().bytes());
  }
  const auto chosen = look.shows_chosen() ? chosen_arg() : std::nullopt;
  for (const auto& [number, begin, end] : sentence.arguments()) {
    if (row_.arg_type(number) == ScriptLine::ArgType::plain) continue;
    if (is_editing() && number == editing_->arg) {
      insert_gap(attributes, editing_->width(), begin, end);
      continue;
    }
    insert_colour(attributes, number == chosen ? look.chosen : look.link, begin, end);
    insert(attributes, Pango::Attribute::create_attr_underline(Pango::UNDERLINE_SINGLE), begin,
           end);
  }
  auto layout = widget.create_pango_layout(sentence.text());
  layout->set_single_paragraph_mode();
  layout->set_attributes(attributes);
  return layout;
}

// If the editor had to be placed further left, the sentence is shifted by as much; its beginning is
// then not visible.
int CRScript::shift(const Layout& layout) const {
  if (!is_editing()) return 0;
  return std::max(0, unshifted_extents(layout, editing_->arg).first - editing_->left);
}

std::pair<int, int> CRScript::extents(const Layout& layout, unsigned arg) const {
  auto place = unshifted_extents(layout, arg);
  place.first -= shift(layout);
  return place;
}

std::pair<int, int> CRScript::unshifted_extents(const Layout& layout, unsigned arg) const {
  const auto sentence = this->sentence();
  const auto& arguments = sentence.arguments();
  const auto found = std::ranges::find(arguments, arg, &Sentence::Argument::number);
  if (found == arguments.end()) return {left_margin, 0};
  const int begin = layout->index_to_pos(static_cast<int>(found->begin)).get_x();
  const int end = layout->index_to_pos(static_cast<int>(found->end)).get_x();
  return {left_margin + std::min(begin, end) / Pango::SCALE, std::abs(end - begin) / Pango::SCALE};
}

std::pair<int, int> CRScript::place_of(Gtk::Widget& widget, unsigned arg) const {
  return extents(lay_out(widget, Look(*this, widget, {})), arg);
}

std::optional<unsigned> CRScript::arg_at(Gtk::Widget& widget, int x) const {
  const auto layout = lay_out(widget, Look(*this, widget, {}));
  for (const auto arg : row_.editable_args()) {
    const auto [left, width] = extents(layout, arg);
    if (x >= left && x < left + width) return arg;
  }
  return std::nullopt;
}

void CRScript::get_size_vfunc(Gtk::Widget& widget, const Gdk::Rectangle* cell_area, int* x_offset,
                              int* y_offset, int* width, int* height) const {
  if (editor_height_ == 0) editor_height_ = SpinButton().size_request().height;
  int text_width = 0;
  int text_height = 0;
  lay_out(widget, Look(*this, widget, {}))->get_pixel_size(text_width, text_height);
  const int full_height = std::max(text_height, editor_height_) + chip_margin;
  if (width) *width = left_margin + text_width + margin;
  if (height) *height = full_height;
  if (x_offset) *x_offset = 0;
  if (y_offset)
    *y_offset = cell_area ? std::max(0, (cell_area->get_height() - full_height) / 2) : 0;
}

void CRScript::render_vfunc(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                            const Gdk::Rectangle& background_area, const Gdk::Rectangle& cell_area,
                            const Gdk::Rectangle& expose_area, Gtk::CellRendererState flags) {
  const Look look(*this, widget, flags);
  const auto layout = lay_out(widget, look);
  int width = 0;
  int height = 0;
  layout->get_pixel_size(width, height);
  const int y = cell_area.get_y() + (cell_area.get_height() - height) / 2;
  const auto area_of = [&](unsigned arg) -> Gdk::Rectangle {
    const auto [left, arg_width] = extents(layout, arg);
    return {cell_area.get_x() + left, y, arg_width, height};
  };
  if (is_editing()) {
    auto area = area_of(editing_->arg);
    area.set_y(background_area.get_y());
    area.set_height(background_area.get_height());
    draw_behind(window, widget, expose_area, area);
  } else if (const auto chosen = chosen_arg(); chosen && look.shows_chosen()) {
    draw_chosen(window, widget, area_of(*chosen));
  }
  if (!is_editing()) draw_note(window, widget, cell_area, left_margin + width + margin, look);
  gtk_paint_layout(widget.get_style()->gobj(), GDK_WINDOW(window->gobj()),
                   static_cast<GtkStateType>(look.state), TRUE, expose_area.gobj(), widget.gobj(),
                   "cellrenderertext", cell_area.get_x() + left_margin - shift(layout), y,
                   layout->gobj());
}

// The background of an editor is that of an unselected row.
void CRScript::draw_behind(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                           const Gdk::Rectangle& expose_area, const Gdk::Rectangle& area) const {
  gtk_paint_flat_box(widget.get_style()->gobj(), GDK_WINDOW(window->gobj()), GTK_STATE_NORMAL,
                     GTK_SHADOW_NONE, expose_area.gobj(), widget.gobj(), "cell_even", area.get_x(),
                     area.get_y(), area.get_width(), area.get_height());
}

// The lamp is before the sentence, the text at the right end of the row, as far as there is room.
void CRScript::draw_note(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                         const Gdk::Rectangle& area, int sentence_width, const Look& look) const {
  const auto note = notes_ && row_.line ? notes_(row_.line) : LineNote();
  const double middle = area.get_y() + area.get_height() / 2.0;
  const auto cairo = window->create_cairo_context();
  if (note.lamp) {
    cairo->set_source_rgb(lamp_colour[0], lamp_colour[1], lamp_colour[2]);
    cairo->arc(area.get_x() + left_margin / 2.0, middle, lamp_radius, 0, 2 * M_PI);
    cairo->fill();
  }
  const int room = area.get_width() - sentence_width - 2 * margin;
  if (note.text.empty() || room < least_note) return;
  auto layout = widget.create_pango_layout(note.text);
  layout->set_ellipsize(Pango::ELLIPSIZE_END);
  layout->set_width(room * Pango::SCALE);
  layout->set_alignment(Pango::ALIGN_RIGHT);
  int width = 0;
  int height = 0;
  layout->get_pixel_size(width, height);
  cairo->set_source_rgb(look.text[0], look.text[1], look.text[2]);
  cairo->move_to(area.get_x() + area.get_width() - margin - room,
                 std::floor(middle - height / 2.0));
  layout->show_in_cairo_context(cairo);
}

void CRScript::draw_chosen(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                           const Gdk::Rectangle& area) const {
  const auto cairo = window->create_cairo_context();
  Gdk::Cairo::set_source_color(cairo, widget.get_style()->get_base(Gtk::STATE_NORMAL));
  cairo->rectangle(area.get_x() - chip_margin, area.get_y() - chip_margin,
                   area.get_width() + 2 * chip_margin, area.get_height() + 2 * chip_margin);
  cairo->fill();
}

// --- Editing ---

Gtk::CellEditable* CRScript::start_editing_vfunc(GdkEvent* event, Gtk::Widget& widget,
                                                 const Glib::ustring& /*path*/,
                                                 const Gdk::Rectangle& /*background_area*/,
                                                 const Gdk::Rectangle& cell_area,
                                                 Gtk::CellRendererState /*flags*/) {
  auto arg = chosen_arg();
  if (event && event->type == GDK_BUTTON_PRESS) {
    if (event->button.button != 1) return nullptr;
    arg = arg_at(widget, static_cast<int>(event->button.x) - cell_area.get_x());
  }
  if (!arg) return nullptr;
  const auto args = row_.editable_args();
  choose(static_cast<unsigned>(std::ranges::find(args, *arg) - args.begin()));
  widget.queue_draw();
  if (row_.arg_type(*arg) != ScriptLine::ArgType::menu) return edit(widget, *arg);
  pop_up(dynamic_cast<Gtk::TreeView&>(widget), *arg, cell_area);
  return nullptr;
}

void CRScript::pop_up(Gtk::TreeView& tree, unsigned arg, const Gdk::Rectangle& cell_area) {
  int x = 0;
  int y = 0;
  tree.get_bin_window()->get_origin(x, y);
  const auto [left, width] = place_of(tree, arg);
  const Gdk::Rectangle area(x + cell_area.get_x() + left, y + cell_area.get_y(), width,
                            cell_area.get_height());
  menu_.pop_up(row_, arg, area, dynamic_cast<Gtk::Window*>(tree.get_toplevel()),
               [this](ScriptLine& line) { signal_line_added_.emit(line); });
}

}  // namespace zemblar

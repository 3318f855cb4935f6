#include "ui/throttle/func_table.h"

#include <gdk/gdkkeysyms.h>
#include <gdkmm/general.h>

#include <algorithm>
#include <array>
#include <typeinfo>

#include "core/i18n.h"
#include "core/property.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "ui/throttle/func_button.h"
#include "ui/toolkit/column_scroll.h"

namespace zemblar {
namespace {

constexpr unsigned columns = 4;
constexpr double mark_width = 3;  // pixels
constexpr std::array mark_keys{GDK_KEY_Left, GDK_KEY_Right, GDK_KEY_Up,
                               GDK_KEY_Down, GDK_KEY_Home,  GDK_KEY_End};

/// Converts a keypad key to the main key with the same meaning.
guint unpadded(guint key) {
  switch (key) {
    case GDK_KEY_KP_Left:
      return GDK_KEY_Left;
    case GDK_KEY_KP_Right:
      return GDK_KEY_Right;
    case GDK_KEY_KP_Up:
      return GDK_KEY_Up;
    case GDK_KEY_KP_Down:
      return GDK_KEY_Down;
    case GDK_KEY_KP_Enter:
      return GDK_KEY_Return;
    default:
      return key;
  }
}

/// Splits n buttons into a row of one wide button, a row of two half-width ones, and rows of four.
struct Layouter {
  explicit Layouter(unsigned n) : wide(n % columns % 2), pair(n % columns >= 2) {}

  [[nodiscard]] unsigned rows(unsigned n) const { return wide + pair + n / columns; }

  unsigned wide;  // number of rows with one button
  unsigned pair;  // number of rows with two
};

bool is_function(const Object& object) {
  return typeid(object) == typeid(Function);
}

}  // namespace

FuncTable::FuncTable() : Glib::ObjectBase("FuncTable"), Gtk::Table(1, 1, true) {
  get_accessible()->set_name(_("Functions"));
  register_property<Lok*>(this, "lok", &FuncTable::get_lok, &FuncTable::set_lok);
}

FuncTable::~FuncTable() = default;

void FuncTable::set_lok(Lok* lok) {
  if (lok == lok_) return;
  lok_ = lok;
  for (auto* connection : {&child_added_, &child_removed_, &child_moved_, &deleted_}) {
    connection->disconnect();
  }
  entries_.clear();
  if (lok) {
    for (auto* child : *lok) {
      if (is_function(*child)) entries_.push_back(make_entry(static_cast<Function&>(*child)));
    }
    child_added_ = lok->signal_child_added().connect([this](Object* child) { insert(child); });
    child_removed_ = lok->signal_child_removed().connect([this](Object* child) { remove(child); });
    child_moved_ = lok->signal_child_moved().connect([this](Object* child) { move(child); });
    deleted_ = lok->signal_deleted().connect([this] { set_lok(nullptr); });
  }
  lay_out();
  notify_property(*this, "lok");
}

FuncTable::Entry FuncTable::make_entry(Function& function) {
  return {&function, std::make_unique<FuncButton>(&function),
          function.property_hidden().signal_changed().connect([this] { lay_out(); })};
}

void FuncTable::insert(Object* child) {
  if (!is_function(*child)) return;
  put(make_entry(static_cast<Function&>(*child)));
}

void FuncTable::put(Entry entry) {
  const auto position = entry.function->get_position();
  const auto behind = std::find_if(entries_.begin(), entries_.end(), [position](const Entry& e) {
    return e.function->get_position() > position;
  });
  entries_.insert(behind, std::move(entry));
  lay_out();
}

void FuncTable::move(Object* child) {
  const auto found = std::ranges::find(entries_, child, &Entry::function);
  if (found == entries_.end()) return;
  auto entry = std::move(*found);
  entries_.erase(found);
  put(std::move(entry));
}

void FuncTable::remove(Object* child) {
  std::erase_if(entries_, [child](const Entry& entry) { return entry.function == child; });
  lay_out();
}

void FuncTable::lay_out() {
  for (auto* child : get_children()) Gtk::Container::remove(*child);
  places_.clear();
  const auto shown = buttons();
  const auto n = static_cast<unsigned>(shown.size());
  set_can_focus(n > 0);
  if (n == 0) return resize(1, 1);
  const Layouter layouter(n);
  resize(layouter.rows(n), columns);
  unsigned cell = 0;  // counts cells; a wide button fills four
  for (unsigned i = 0; i < n; ++i) {
    const unsigned width = i < layouter.wide ? 4 : i < layouter.wide + 2 * layouter.pair ? 2 : 1;
    const auto& place = places_.emplace_back(Place{cell / columns, cell % columns, width});
    attach(*shown[i], place.column, place.column + width, place.row, place.row + 1,
           Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
    shown[i]->show();
    cell += width;
  }
  describe_mark();
}

std::vector<FuncButton*> FuncTable::buttons() const {
  std::vector<FuncButton*> shown;
  for (const auto& entry : entries_) {
    if (!entry.function->get_hidden()) shown.push_back(entry.button.get());
  }
  return shown;
}

bool FuncTable::press(unsigned number) {
  for (auto* button : buttons()) {
    if (button->get_function()->get_function() != number) continue;
    button->set_active(!button->get_active());
    return true;
  }
  return false;
}

// --- The mark ---

// The index of the marked button; 0 if the marked function is no longer shown.
std::size_t FuncTable::marked() const {
  const auto shown = buttons();
  const auto found = std::ranges::find(shown, marked_, &FuncButton::get_function);
  return found == shown.end() ? 0 : static_cast<std::size_t>(found - shown.begin());
}

void FuncTable::mark(std::size_t index) {
  auto& button = *buttons().at(index);
  marked_ = button.get_function();
  show_in_viewport(*this, button.get_allocation());
  describe_mark();
  queue_draw();
}

// Announces the marked button to assistive technology, which cannot follow the focus here.
void FuncTable::describe_mark() {
  auto& marked_button = *buttons().at(marked());
  get_accessible()->set_description(marked_button.get_function()->get_name());
  if (!is_focus()) return;
  g_signal_emit_by_name(get_accessible()->gobj(), "active-descendant-changed",
                        marked_button.get_accessible()->gobj());
}

// The index of the button that a key moves the mark to; at an edge the marked one itself.
std::size_t FuncTable::neighbour(guint key) const {
  const auto from = marked();
  const auto last = places_.size() - 1;
  const auto& here = places_.at(from);
  const bool up = key == GDK_KEY_Up;
  if (key == GDK_KEY_Left) return from == 0 ? 0 : from - 1;
  if (key == GDK_KEY_Right) return std::min(from + 1, last);
  if (key == GDK_KEY_Home) return 0;
  if (key == GDK_KEY_End) return last;
  if ((up && here.row == 0) || (!up && here.row == places_.back().row)) return from;
  const auto wanted = up ? here.row - 1 : here.row + 1;
  const auto meets = [&](const Place& place) {
    return place.row == wanted && place.column <= here.column &&
           here.column < place.column + place.width;
  };
  return static_cast<std::size_t>(std::ranges::find_if(places_, meets) - places_.begin());
}

bool FuncTable::on_key_press_event(GdkEventKey* event) {
  const auto key = unpadded(event->keyval);
  const bool plain = (event->state & gtk_accelerator_get_default_mod_mask()) == 0;
  if (!plain || places_.empty()) return Gtk::Table::on_key_press_event(event);
  if (key == GDK_KEY_Return) {
    auto* button = buttons().at(marked());
    button->set_active(!button->get_active());
    return true;
  }
  if (std::ranges::find(mark_keys, key) == mark_keys.end()) {
    return Gtk::Table::on_key_press_event(event);
  }
  mark(neighbour(key));
  return true;
}

bool FuncTable::on_focus_in_event(GdkEventFocus* event) {
  if (!places_.empty()) describe_mark();
  queue_draw();
  return Gtk::Table::on_focus_in_event(event);
}

bool FuncTable::on_focus_out_event(GdkEventFocus* event) {
  queue_draw();
  return Gtk::Table::on_focus_out_event(event);
}

bool FuncTable::on_expose_event(GdkEventExpose* event) {
  const bool handled = Gtk::Table::on_expose_event(event);
  if (!is_focus() || places_.empty()) return handled;
  const auto box = buttons().at(marked())->get_allocation();
  const auto context = get_window()->create_cairo_context();
  const auto colour = get_style()->get_bg(Gtk::STATE_SELECTED);
  Gdk::Cairo::set_source_color(context, colour);
  context->set_line_width(mark_width);
  context->rectangle(box.get_x() + mark_width / 2, box.get_y() + mark_width / 2,
                     box.get_width() - mark_width, box.get_height() - mark_width);
  context->stroke();
  return handled;
}

}  // namespace zemblar

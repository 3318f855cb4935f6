#include "ui/func_table.h"

#include <algorithm>
#include <typeinfo>

#include "core/property.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "ui/func_button.h"

namespace zemblar {
namespace {

constexpr unsigned columns = 4;

/// A wide button and a pair of half-width ones fill what does not fill a row of four.
struct Layouter {
  explicit Layouter(unsigned n) : wide(n % columns % 2), pair(n % columns >= 2) {}

  [[nodiscard]] unsigned rows(unsigned n) const { return wide + pair + n / columns; }

  unsigned wide;  // rows of one button
  unsigned pair;  // rows of two
};

bool is_function(const Object& object) {
  return typeid(object) == typeid(Function);
}

}  // namespace

FuncTable::FuncTable() : Glib::ObjectBase("FuncTable"), Gtk::Table(1, 1, true) {
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
  const auto shown = buttons();
  const auto n = static_cast<unsigned>(shown.size());
  if (n == 0) return resize(1, 1);
  const Layouter layouter(n);
  resize(layouter.rows(n), columns);
  unsigned cell = 0;  // counted along the rows; a wide button fills four
  for (unsigned i = 0; i < n; ++i) {
    const unsigned width = i < layouter.wide ? 4 : i < layouter.wide + 2 * layouter.pair ? 2 : 1;
    const unsigned row = cell / columns;
    const unsigned column = cell % columns;
    attach(*shown[i], column, column + width, row, row + 1, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
    shown[i]->show();
    cell += width;
  }
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

}  // namespace zemblar

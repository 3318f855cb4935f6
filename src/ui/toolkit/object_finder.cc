#include "ui/toolkit/object_finder.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <gtkmm/box.h>
#include <gtkmm/cellrendererpixbuf.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/settings.h>
#include <gtkmm/stock.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "core/i18n.h"
#include "core/object.h"
#include "core/toplevel.h"
#include "ui/toolkit/object_icon.h"
#include "ui/toolkit/type_size.h"

namespace zemblar {
namespace {

constexpr int width = 380;
constexpr int height = 420;
constexpr int border = 6;
constexpr int page = 10;  // rows

struct Columns : Gtk::TreeModelColumnRecord {
  Columns() {
    add(object);
    add(icon);
    add(name);
    add(where);
  }
  Gtk::TreeModelColumn<zemblar::Object*> object;  // null in the row that chooses nothing
  Gtk::TreeModelColumn<Glib::ustring> icon;
  Gtk::TreeModelColumn<Glib::ustring> name;
  Gtk::TreeModelColumn<Glib::ustring> where;
};

const Columns& columns() {
  static const Columns columns;
  return columns;
}

}  // namespace

ObjectFinder::ObjectFinder(ObjectChoices choices, ObjectMenuBase::Chosen chosen, bool with_none)
    : choices_(std::move(choices)), chosen_(std::move(chosen)), with_none_(with_none) {
  build();
  bool first = true;
  follower_ = std::make_unique<LayoutFollower>([this, first](Layout& layout, auto& ends) mutable {
    if (!std::exchange(first, false)) return hide();
    const auto on = [&](sigc::signal<void, Object*>& signal) {
      ends.emplace_back(signal.connect([this](Object* object) { on_changed(*object); }));
    };
    on(layout.signal_object_added());
    ends.emplace_back(layout.signal_object_removed().connect(
        [this](Object* object) { remove_rows_of(*object); }));
    on(layout.signal_object_renamed());
    fill();
  });
}

ObjectFinder::~ObjectFinder() = default;

void ObjectFinder::build() {
  set_title(choices_.heading);
  set_size_for_type(*this, width, height);
  set_border_width(border);
  set_type_hint(Gdk::WINDOW_TYPE_HINT_DIALOG);
  set_skip_taskbar_hint();
  set_modal();
  text_.get_accessible()->set_name(_("Find"));
  text_.set_tooltip_text(_("A part of the name"));
  text_.set_icon_from_stock(Gtk::Stock::FIND);
  text_.signal_changed().connect([this] { fill(); });
  rows_ = Gtk::ListStore::create(columns());
  list_.set_model(rows_);
  list_.set_headers_visible(false);
  list_.set_enable_search(false);
  list_.get_accessible()->set_name(choices_.heading);
  auto* column = Gtk::manage(new Gtk::TreeViewColumn);
  auto* icon = Gtk::manage(new Gtk::CellRendererPixbuf);
  column->pack_start(*icon, false);
  column->add_attribute(icon->property_stock_id(), columns().icon);
  column->pack_start(columns().name);
  list_.append_column(*column);
  const auto where = list_.append_column("", columns().where) - 1;
  list_.get_column_cell_renderer(where)->set_property("sensitive", false);
  column->set_expand();
  list_.signal_row_activated().connect(
      [this](const auto& /*path*/, auto* /*column*/) { choose(); });
  list_.signal_button_release_event().connect([this](GdkEventButton* event) {
    Gtk::TreePath path;
    if (event->button == 1 && event->window == list_.get_bin_window()->gobj() &&
        list_.get_path_at_pos(static_cast<int>(event->x), static_cast<int>(event->y), path)) {
      choose_soon();
    }
    return false;
  });
  auto* scrolled = Gtk::manage(new Gtk::ScrolledWindow);
  scrolled->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  scrolled->set_shadow_type(Gtk::SHADOW_IN);
  scrolled->add(list_);
  auto* rows = Gtk::manage(new Gtk::VBox(false, border));
  rows->pack_start(text_, false, false);
  rows->pack_start(*scrolled, true, true);
  add(*rows);
  rows->show_all();
}

// Selects the first object whose name begins with the text, else the first whose name contains it;
// without text, the object chosen before.
void ObjectFinder::fill() {
  const auto text = text_.get_text().casefold().raw();
  list_.unset_model();
  rows_->clear();
  if (with_none_ && text.empty()) append(nullptr, choices_.none, "");
  fill_from(choices_.container(), text);
  list_.set_model(rows_);
  const auto rows = rows_->children();
  if (rows.empty()) return;
  const auto begins = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
    return row[columns().object] &&
           row[columns().name].operator Glib::ustring().casefold().raw().starts_with(text);
  });
  const auto shown = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
    return text.empty() && choices_.chosen && row[columns().object] == choices_.chosen;
  });
  list_.set_cursor(rows_->get_path(shown ? shown : begins ? begins : rows.begin()));
}

void ObjectFinder::fill_from(Object& container, const std::string& text) {
  for (auto* object : container) {
    const auto name = object->get_name();
    if (choices_.offers(*object) && name.casefold().raw().find(text) != std::string::npos) {
      append(object, name, &container == &choices_.container() ? "" : container.get_name());
    }
    if (!object->empty()) fill_from(*object, text);
  }
}

// A changed toplevel means a new document, which is incomplete and has none of the offered objects.
void ObjectFinder::on_changed(const Object& object) {
  if (dynamic_cast<const Toplevel*>(&object)) document_replaced_ = true;
  document_replaced_ ? hide() : refill();
}

// Another object in the layout has changed: keeps the selected row.
void ObjectFinder::refill() {
  const auto row = list_.get_selection()->get_selected();
  auto* chosen = row ? (*row)[columns().object].operator Object*() : nullptr;
  fill();
  for (const auto& now : rows_->children()) {
    if (chosen && now[columns().object] == chosen) list_.set_cursor(rows_->get_path(now));
  }
}

// Removes the rows of an ending object and of its descendants, which are still in the tree.
void ObjectFinder::remove_rows_of(const Object& ending) {
  const auto rows = rows_->children();
  for (auto row = rows.begin(); row != rows.end();) {
    const Object* object = (*row)[columns().object];
    while (object && object != &ending) object = object->get_parent();
    row = object ? rows_->erase(row) : ++row;
  }
}

void ObjectFinder::append(Object* object, const Glib::ustring& name, const Glib::ustring& where) {
  auto row = *rows_->append();
  row[columns().object] = object;
  if (object) row[columns().icon] = object_icon(*object).get_string();
  row[columns().name] = name;
  row[columns().where] = where;
}

bool ObjectFinder::on_key_press_event(GdkEventKey* event) {
  switch (event->keyval) {
    case GDK_KEY_Escape:
      hide();
      return true;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
      choose();
      return true;
    case GDK_KEY_Up:
      move_cursor(-1);
      return true;
    case GDK_KEY_Down:
      move_cursor(1);
      return true;
    case GDK_KEY_Page_Up:
      move_cursor(-page);
      return true;
    case GDK_KEY_Page_Down:
      move_cursor(page);
      return true;
    default:
      return Gtk::Window::on_key_press_event(event);
  }
}

void ObjectFinder::move_cursor(int rows) {
  Gtk::TreePath path;
  Gtk::TreeViewColumn* column = nullptr;
  list_.get_cursor(path, column);
  const int count = static_cast<int>(rows_->children().size());
  if (path.empty() || count == 0) return;
  list_.set_cursor(Gtk::TreePath(std::to_string(std::clamp(path[0] + rows, 0, count - 1))));
}

// Waits for a possible second press of a double click, which would otherwise hit the throttle's
// scale below the window.
void ObjectFinder::choose_soon() {
  const std::chrono::milliseconds second_press{
      Gtk::Settings::get_default()->property_gtk_double_click_time()};
  choose_soon_ = Timeout::once(second_press, [this] { choose(); });
}

// `chosen` may destroy this window.
void ObjectFinder::choose() {
  const auto row = list_.get_selection()->get_selected();
  if (!row || !get_visible()) return;
  auto* object = (*row)[columns().object].operator Object*();
  hide();
  const auto chosen = chosen_;
  chosen(object);
}

}  // namespace zemblar

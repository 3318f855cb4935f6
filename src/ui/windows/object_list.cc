#include "ui/windows/object_list.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <glibmm/main.h>
#include <gtkmm/cellrendererpixbuf.h>
#include <gtkmm/separatormenuitem.h>
#include <gtkmm/stock.h>

#include <utility>

#include "core/i18n.h"
#include "core/property.h"
#include "core/status.h"
#include "core/toplevel.h"
#include "devices/device.h"
#include "ui/status/trains_standing.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/object_ref.h"
#include "ui/toolkit/popup.h"
#include "ui/toolkit/renaming.h"
#include "ui/windows/file_menu.h"

namespace zemblar {
namespace {

// Containers with more children start folded, so that all containers are visible at once.
constexpr auto few = ObjectRows::few;

constexpr int context_button = 3;
constexpr int row_height = 24;  // pixels; fits the largest icon

}  // namespace

ObjectList::ObjectList() {
  // Connected before the handlers of assistive technology, which the next line connects.
  signal_row_expanded().connect(
      [this](const auto& /*row*/, const auto& /*path*/) {
        if (unfolding_all_) g_signal_stop_emission_by_name(gobj(), "row-expanded");
      },
      false);
  get_accessible()->set_name(_("Objects"));
  build_column();
  build_menu();
  const std::vector<Gtk::TargetEntry> dragged{
      Gtk::TargetEntry("GTK_TREE_MODEL_ROW", Gtk::TARGET_SAME_WIDGET)};
  enable_model_drag_source(dragged, Gdk::BUTTON1_MASK, Gdk::ACTION_MOVE);
  enable_model_drag_dest(dragged, Gdk::ACTION_MOVE);
  rows_->may_drop = [](Object& object, Object& parent) { return object.can_move_to(parent); };
  rows_->drop = sigc::mem_fun(*this, &ObjectList::drop);
  rows_->is_editing = [this] { return name_cell_.property_editable().get_value(); };
  set_headers_visible(false);
  set_model(rows_);
  // Disables the toolkit's search for typed letters. Its window grabs all input, permanently if the
  // menu of its text field could not be shown.
  set_enable_search(false);
  selection_changed_ =
      get_selection()->signal_changed().connect(sigc::mem_fun(*this, &ObjectList::announce));
  made_ = signal_object_made().connect(sigc::mem_fun(*this, &ObjectList::on_made));
  follower_ = std::make_unique<LayoutFollower>(
      [this](Layout& layout, auto& connections) { attach(layout, connections); });
}

ObjectList::~ObjectList() {
  selection_changed_.disconnect();
  rows_->is_editing = nullptr;
}

// --- Appearance ---

// A fixed row height saves the toolkit from measuring each of thousands of rows.
void ObjectList::build_column() {
  auto* icon_cell = Gtk::manage(new Gtk::CellRendererPixbuf);
  icon_cell->property_height() = row_height;
  column_.pack_start(*icon_cell, false);
  column_.pack_start(name_cell_, true);
  column_.add_attribute(icon_cell->property_stock_id(), ObjectRows::columns().icon);
  column_.add_attribute(name_cell_.property_text(), ObjectRows::columns().name);
  column_.set_sizing(Gtk::TREE_VIEW_COLUMN_FIXED);
  name_cell_.property_ellipsize() = Pango::ELLIPSIZE_END;
  append_column(column_);
  set_fixed_height_mode();
  name_cell_.signal_edited().connect(sigc::mem_fun(*this, &ObjectList::rename));
  name_cell_.signal_editing_canceled().connect([this] { name_cell_.property_editable() = false; });
}

void ObjectList::build_menu() {
  rename_item_ = Gtk::manage(new Gtk::MenuItem(_("_Rename"), true));
  rename_item_->signal_activate().connect(sigc::mem_fun(*this, &ObjectList::start_rename));
  menu_.append(*rename_item_);
  delete_item_ = append_stock_item(menu_, Gtk::Stock::DELETE,
                                   sigc::mem_fun(*this, &ObjectList::delete_selected));
  menu_.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  const auto append = [this](const char* label) {
    auto* item = Gtk::manage(new Gtk::MenuItem(label, true));
    menu_.append(*item);
    return item;
  };
  up_item_ = append(_("Move _Up"));
  up_item_->signal_activate().connect([this] { move_selected(false); });
  down_item_ = append(_("Move Do_wn"));
  down_item_->signal_activate().connect([this] { move_selected(true); });
  move_item_ = append(_("Move _To"));
  menu_.show_all();
  signal_popup_menu().connect([this] {
    pop_up(0, gtk_get_current_event_time());
    return true;
  });
}

// --- Following the document ---

void ObjectList::attach(Layout& layout, LayoutFollower::Connections& connections) {
  refill();
  const auto on = [&](sigc::signal<void, Object*>& signal, auto handle) {
    connections.emplace_back(signal.connect([handle](Object* object) { handle(*object); }));
  };
  on(layout.signal_object_added(), [this](Object& object) { on_added(object); });
  on(layout.signal_object_removed(), [this](Object& object) { rows_->remove(object); });
  on(layout.signal_object_moved(), [this](Object& object) { on_moved(object); });
  on(layout.signal_object_renamed(), [this](Object& object) {
    if (rows_->refresh(object)) refill_later();
  });
}

// The selected object stays selected as long as it has a row. With `keep_selected` it keeps its row
// even if it does not match the filter, so that its panel does not vanish while the user is editing
// it.
void ObjectList::refill(bool keep_selected) {
  refill_later_.disconnect();
  auto* layout = &Layout::get();
  const bool same = announced_ && layout == announced_layout_;
  auto* shown = same ? announced_ : nullptr;
  announced_layout_ = layout;
  refilling_ = true;
  unset_model();
  rows_->fill(*layout, filter_, keep_selected ? shown : nullptr);
  freeze_notify();
  set_model(rows_);
  if (rows_->is_filtered()) {
    unfold_all();
  } else {
    unfold_small_ones();
  }
  thaw_notify();
  if (shown) select(*shown);
  refilling_ = false;
  announce();
}

void ObjectList::refill_later() {
  refill_later_ = Glib::signal_idle().connect([this] {
    refill(true);
    return false;
  });
}

// Suppresses "row-expanded", because assistive technology would examine all rows above at each of
// these signals. It learns of all rows together when the model is set.
void ObjectList::unfold_all() {
  unfolding_all_ = true;
  expand_all();
  unfolding_all_ = false;
}

void ObjectList::unfold_small_ones() {
  expand_row(Gtk::TreePath("0"), false);
  for (const auto* toplevel : Layout::get()) {
    const auto row = rows_->row_of(*toplevel);
    if (row && toplevel->child_count() <= few) expand_row(rows_->get_path(row), false);
  }
}

// Unfolds the parent of a new object so that it is visible, unless the parent has many children.
// The children of the new object stay folded.
void ObjectList::on_added(Object& object) {
  const bool is_hit = rows_->add(object);
  if (is_hit) refill_later();
  const auto row = rows_->row_of(object);
  auto* parent = object.get_parent();
  const bool wanted = dynamic_cast<Toplevel*>(parent) || parent == selected();
  if (row && wanted && parent->child_count() <= few) unfold_to(rows_->get_path(row));
  if (!row && !is_hit && rows_->is_filtered() && parent == selected()) {
    set_status(Glib::ustring::compose(_("“%1” is there, but is not what Find looks for."),
                                      object.get_name()));
  }
  // New resets the layout's name without a notification.
  if (dynamic_cast<Toplevel*>(&object)) rows_->refresh(*object.get_parent());
}

// Selecting the new object removes the panel with the button that made it, so the list takes the
// focus.
void ObjectList::on_made(Object& object) {
  if (refill_later_.connected()) refill(true);
  if (object.get_parent() != selected() || !rows_->row_of(object)) return;
  select(object);
  grab_focus();
}

// Unfolds the ancestors of a row, not the row itself.
void ObjectList::unfold_to(Gtk::TreePath path) {
  if (path.size() > 1 && path.up()) expand_to_path(path);
}

void ObjectList::on_moved(Object& object) {
  auto* former = selected();
  const auto from = rows_->row_of(object);
  const bool unfolded = from && row_expanded(rows_->get_path(from));
  refilling_ = true;
  // Folds the row first, because the toolkit leaks memory when an unfolded row is removed.
  if (unfolded) collapse_row(rows_->get_path(from));
  rows_->move(object);
  const auto to = rows_->row_of(object);
  if (to && unfolded) expand_row(rows_->get_path(to), false);
  if (rows_->is_filtered()) refill_later();
  if (former) select(*former);
  refilling_ = false;
  announce();
}

void ObjectList::set_filter(const Glib::ustring& text) {
  if (text.raw() == filter_.raw()) return;
  filter_ = text;
  refill();
}

void ObjectList::enter() {
  if (auto* hit = rows_->first_hit()) {
    select(*hit);
  } else if (!selected()) {
    set_cursor(Gtk::TreePath("0"));
  }
  grab_focus();
}

// --- Selection ---

Object* ObjectList::selected() const {
  const auto row = const_cast<ObjectList*>(this)->get_selection()->get_selected();
  return row ? (*row)[ObjectRows::columns().object] : static_cast<Object*>(nullptr);
}

void ObjectList::select(Object& object) {
  const auto row = rows_->make_row_of(object);
  if (!row) return;
  const auto path = rows_->get_path(row);
  unfold_to(path);
  set_cursor(path);
}

void ObjectList::announce() {
  if (refilling_) return;
  auto* object = selected();
  if (object == announced_) return;
  announced_ = object;
  signal_selected_.emit(object);
}

// --- Acting on the selected object ---

bool ObjectList::renamable(const Object& object) {
  return !dynamic_cast<const Toplevel*>(&object);
}

bool ObjectList::on_key_press_event(GdkEventKey* event) {
  const auto modifiers = event->state & gtk_accelerator_get_default_mod_mask();
  if (modifiers == 0 && event->keyval == GDK_KEY_F2) {
    start_rename();
    return true;
  }
  if (modifiers == 0 && (event->keyval == GDK_KEY_Delete || event->keyval == GDK_KEY_KP_Delete)) {
    delete_selected();
    return true;
  }
  const bool up = event->keyval == GDK_KEY_Up;
  if (modifiers == GDK_MOD1_MASK && (up || event->keyval == GDK_KEY_Down)) {
    move_selected(!up);
    return true;
  }
  return Gtk::TreeView::on_key_press_event(event);
}

bool ObjectList::on_button_press_event(GdkEventButton* event) {
  const bool handled = Gtk::TreeView::on_button_press_event(event);
  if (event->type != GDK_BUTTON_PRESS || event->button != context_button) return handled;
  pop_up(event->button, event->time);
  return true;
}

void ObjectList::pop_up(unsigned button, guint32 time) {
  auto* object = selected();
  if (!object) return;
  rename_item_->set_sensitive(renamable(*object));
  delete_item_->set_sensitive(object->get_deletable());
  auto* parent = object->get_parent();
  const bool moves = parent && object->can_move_to(*parent);
  up_item_->set_sensitive(moves && ObjectIter(*object) != parent->begin());
  down_item_->set_sensitive(moves && ++ObjectIter(*object));
  auto* containers = Gtk::manage(new Gtk::Menu);
  if (moves) offer_containers(*containers, *object, Layout::get());
  containers->show_all();
  const bool any = !containers->items().empty();
  move_item_->set_submenu(*containers);
  move_item_->set_sensitive(any);
  if (button != 0) return menu_.popup(button, time);
  Gdk::Rectangle row;
  get_cell_area(rows_->get_path(rows_->row_of(*object)), column_, row);
  int x = 0;
  int y = 0;
  get_bin_window()->get_origin(x, y);
  popup_below(menu_, {x + row.get_x(), y + row.get_y(), row.get_width(), row.get_height()});
}

// The name cell is editable only during this, so that a click on the selected row does not start
// editing.
void ObjectList::start_rename() {
  const auto row = get_selection()->get_selected();
  const auto* object = selected();
  if (!object || !renamable(*object)) return;
  if (!object->keeps_name()) {
    return set_status(Glib::ustring::compose(
        _("“%1” cannot be renamed: a layout file has no names of inputs. Name the block instead."),
        object->get_name()));
  }
  name_cell_.property_editable() = true;
  set_cursor(rows_->get_path(row), column_, name_cell_, true);
}

void ObjectList::rename(const Glib::ustring& path, const Glib::ustring& text) {
  name_cell_.property_editable() = false;
  const auto row = rows_->get_iter(path);
  Object* object = row ? (*row)[ObjectRows::columns().object] : static_cast<Object*>(nullptr);
  if (object) rename_by_hand(*object, text);
}

// The object to select after deleting one: the next visible sibling, else the previous one, else
// the parent.
Object* ObjectList::neighbour(Object& object) {
  for (auto next = ObjectIter(object); ++next;) {
    if (rows_->row_of(**next)) return *next;
  }
  const auto first = object.get_parent()->begin();
  for (auto previous = ObjectIter(object); previous != first;) {
    --previous;
    if (rows_->row_of(**previous)) return *previous;
  }
  return object.get_parent();
}

void ObjectList::delete_selected() {
  auto* object = selected();
  if (!object || !object->get_deletable()) return;
  const auto* device = dynamic_cast<Device*>(object);
  if (!device) return delete_now(*object);
  // Trains of a device must stand before it is deleted, because no other device can stop them. The
  // slot is disconnected when the list ends.
  const auto going = std::make_shared<ObjectRef<Object>>(object);
  const sigc::slot<void, Object&> go_on = sigc::mem_fun(*this, &ObjectList::delete_now);
  when_trains_stand(
      [go_on, going] {
        if (*going) go_on(**going);
      },
      device);
}

void ObjectList::delete_now(Object& object) {
  const auto name = object.get_name();
  const ObjectRef<Object> next(neighbour(object));
  object.destroy();
  if (next) select(*next);
  set_status(Glib::ustring::compose(_("Deleted “%1”."), name));
}

// --- Moving it ---

/// Appends items for all containers below `below` that accept the object, except its parent.
void ObjectList::offer_containers(Gtk::Menu& menu, Object& object, Object& below) {
  for (auto* container : below) {
    if (container != object.get_parent() && object.can_move_to(*container)) {
      auto* item = Gtk::manage(new Gtk::MenuItem(container->get_name()));
      const auto what = std::make_shared<ObjectRef<Object>>(&object);
      const auto where = std::make_shared<ObjectRef<Object>>(container);
      item->signal_activate().connect([this, what, where] {
        if (*what && *where) put(**what, **where, (*where)->child_count());
      });
      menu.append(*item);
    }
    if (container != &object) offer_containers(menu, object, *container);
  }
}

void ObjectList::move_selected(bool down) {
  auto* object = selected();
  auto* parent = object ? object->get_parent() : nullptr;
  if (!parent || !object->can_move_to(*parent)) return;
  // Moves past the next visible sibling.
  auto other = ObjectIter(*object);
  do {
    if (!down && other == parent->begin()) return;
    down ? ++other : --other;
    if (!other) return;
  } while (!rows_->row_of(**other));
  put(*object, *parent, static_cast<unsigned>(other->get_position()));
}

bool ObjectList::on_drag_drop(const Glib::RefPtr<Gdk::DragContext>& context, int x, int y,
                              guint time) {
  Gtk::TreePath path;
  Gtk::TreeViewDropPosition where{};
  get_drag_dest_row(path, where);
  const bool on_row =
      where == Gtk::TREE_VIEW_DROP_INTO_OR_BEFORE || where == Gtk::TREE_VIEW_DROP_INTO_OR_AFTER;
  dropped_on_ = !path.empty() && on_row ? rows_->object_at(path) : nullptr;
  return Gtk::TreeView::on_drag_drop(context, x, y, time);
}

// For a drop on a container the toolkit reports its first child as the next one; the object goes to
// the end instead.
void ObjectList::drop(Object& object, Object& parent, const Object* next) {
  if (std::exchange(dropped_on_, nullptr) == &parent) next = nullptr;
  if (next == &object) return;
  auto place = next ? static_cast<unsigned>(next->get_position()) : parent.child_count();
  const bool from_before =
      object.get_parent() == &parent && next && object.get_position() < next->get_position();
  put(object, parent, from_before ? place - 1 : place);
}

void ObjectList::put(Object& object, Object& parent, unsigned place) {
  const auto name = object.get_name();
  const bool elsewhere = object.get_parent() != &parent;
  object.move_to(parent, place);
  select(object);
  if (!elsewhere) return;
  const char* said = object.get_name().raw() == name.raw()
                         ? N_("Moved “%1” to “%2”.")
                         : N_("“%1” is taken in “%2”: it is called “%3” there.");
  set_status(Glib::ustring::compose(_(said), name, parent.get_name(), object.get_name()));
}

}  // namespace zemblar

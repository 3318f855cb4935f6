#include "ui/object_list.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <gtkmm/cellrendererpixbuf.h>
#include <gtkmm/stock.h>

#include "core/i18n.h"
#include "core/property.h"
#include "core/status.h"
#include "core/toplevel.h"
#include "devices/device.h"
#include "ui/file_menu.h"
#include "ui/object_icon.h"

namespace zemblar {
namespace {

// Groups with more children start folded, so that all groups are seen at once.
constexpr unsigned few = 12;

constexpr int context_button = 3;

}  // namespace

ObjectList::ObjectList() : rows_(Gtk::TreeStore::create(columns_)) {
  get_accessible()->set_name(_("Objects"));
  build_column();
  build_menu();
  set_headers_visible(false);
  set_model(rows_);
  set_search_column(columns_.name);
  selection_changed_ =
      get_selection()->signal_changed().connect(sigc::mem_fun(*this, &ObjectList::announce));
  follower_ = std::make_unique<LayoutFollower>(
      [this](Layout& layout, auto& connections) { attach(layout, connections); });
}

ObjectList::~ObjectList() {
  selection_changed_.disconnect();
}

// --- Appearance ---

// Rows of one height: the toolkit need not measure each of thousands.
void ObjectList::build_column() {
  auto* icon_cell = Gtk::manage(new Gtk::CellRendererPixbuf);
  column_.pack_start(*icon_cell, false);
  column_.pack_start(name_cell_, true);
  column_.add_attribute(icon_cell->property_stock_id(), columns_.icon);
  column_.add_attribute(name_cell_.property_text(), columns_.name);
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
  menu_.show_all();
  signal_popup_menu().connect([this] {
    pop_up(0, gtk_get_current_event_time());
    return true;
  });
}

// --- Following the document ---

void ObjectList::attach(Layout& layout, LayoutFollower::Connections& connections) {
  rows_by_object_.clear();
  unset_model();
  rows_->clear();
  fill(layout, rows_->prepend());
  set_model(rows_);
  expand_row(Gtk::TreePath("0"), false);
  for (const auto* toplevel : layout) {
    if (toplevel->child_count() > few) continue;
    expand_row(rows_->get_path(rows_by_object_.at(toplevel).iter), false);
  }
  connections.emplace_back(
      layout.signal_object_added().connect([this](Object* object) { add_object(*object); }));
  connections.emplace_back(
      layout.signal_object_removed().connect([this](Object* object) { remove_object(*object); }));
  connections.emplace_back(
      layout.signal_object_renamed().connect([this](Object* object) { refresh(*object); }));
  announce();
}

// From the last child to the first: the toolkit walks all rows before the one that it adds.
void ObjectList::fill(Object& object, const Gtk::TreeIter& row) {
  set_row(object, row);
  const auto first = object.begin();
  for (auto child = object.end(); child != first;) {
    --child;
    fill(**child, rows_->prepend(row->children()));
  }
}

void ObjectList::set_row(Object& object, const Gtk::TreeIter& row) {
  (*row)[columns_.icon] = object_icon(object).get_string();
  (*row)[columns_.name] = object.get_name();
  (*row)[columns_.object] = &object;
  auto& active = rows_by_object_.insert_or_assign(&object, Row{row, {}}).first->second.active;
  if (auto* device = dynamic_cast<Device*>(&object)) {
    active =
        device->property_active().signal_changed().connect([this, &object] { refresh(object); });
  }
}

void ObjectList::add_object(Object& object) {
  if (rows_by_object_.contains(&object)) return;
  const auto parent = rows_by_object_.find(object.get_parent());
  if (parent == rows_by_object_.end()) return;
  const auto row = rows_->append(parent->second.iter->children());
  set_row(object, row);
  show_new_row(row);
  // New has renamed the layout without a word.
  if (dynamic_cast<Toplevel*>(&object)) refresh(*object.get_parent());
}

// Whoever adds one object wants to see it; whoever adds hundreds does not.
void ObjectList::show_new_row(const Gtk::TreeIter& row) {
  const auto parent = row->parent();
  if (parent->children().size() <= few) expand_to_path(rows_->get_path(row));
}

void ObjectList::remove_object(const Object& object) {
  const auto found = rows_by_object_.find(&object);
  if (found == rows_by_object_.end()) return;
  const auto row = found->second.iter;
  rows_by_object_.erase(found);
  (*row)[columns_.object] = nullptr;
  rows_->erase(row);
}

void ObjectList::refresh(const Object& object) {
  const auto found = rows_by_object_.find(&object);
  if (found == rows_by_object_.end()) return;
  const auto& row = *found->second.iter;
  row[columns_.icon] = object_icon(object).get_string();
  row[columns_.name] = object.get_name();
}

// --- Selection ---

Object* ObjectList::selected() const {
  const auto row = const_cast<ObjectList*>(this)->get_selection()->get_selected();
  return row ? (*row)[columns_.object] : static_cast<Object*>(nullptr);
}

void ObjectList::select(const Object& object) {
  const auto found = rows_by_object_.find(&object);
  if (found == rows_by_object_.end()) return;
  const auto path = rows_->get_path(found->second.iter);
  expand_to_path(path);
  set_cursor(path);
}

void ObjectList::announce() {
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
  return Gtk::TreeView::on_key_press_event(event);
}

bool ObjectList::on_button_press_event(GdkEventButton* event) {
  const bool handled = Gtk::TreeView::on_button_press_event(event);
  if (event->type != GDK_BUTTON_PRESS || event->button != context_button) return handled;
  pop_up(event->button, event->time);
  return true;
}

void ObjectList::pop_up(unsigned button, guint32 time) {
  const auto* object = selected();
  if (!object) return;
  rename_item_->set_sensitive(renamable(*object));
  delete_item_->set_sensitive(object->get_deletable());
  menu_.popup(button, time);
}

// Names can be edited only from here: a click on the selected row is just a click.
void ObjectList::start_rename() {
  const auto row = get_selection()->get_selected();
  const auto* object = selected();
  if (!object || !renamable(*object)) return;
  name_cell_.property_editable() = true;
  set_cursor(rows_->get_path(row), column_, name_cell_, true);
}

void ObjectList::rename(const Glib::ustring& path, const Glib::ustring& text) {
  name_cell_.property_editable() = false;
  const auto row = rows_->get_iter(path);
  Object* object = row ? (*row)[columns_.object] : static_cast<Object*>(nullptr);
  if (!object || text == object->get_name()) return;
  object->set_name(text);
  if (object->get_name() == text || text.empty()) return;
  set_status(
      Glib::ustring::compose(_("“%1” is taken: “%2” keeps its name."), text, object->get_name()));
}

void ObjectList::delete_selected() {
  auto* object = selected();
  if (!object || !object->get_deletable()) return;
  const auto name = object->get_name();
  object->destroy();
  set_status(Glib::ustring::compose(_("Deleted “%1”."), name));
}

}  // namespace zemblar

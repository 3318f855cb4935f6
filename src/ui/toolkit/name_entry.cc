#include "ui/toolkit/name_entry.h"

#include <gtkmm/entrycompletion.h>

#include <algorithm>
#include <utility>

#include "core/i18n.h"
#include "core/string_pool.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/renaming.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

struct TextColumn : Gtk::TreeModelColumnRecord {
  TextColumn() { add(text); }
  Gtk::TreeModelColumn<Glib::ustring> text;
};

const TextColumn& column() {
  static const TextColumn column;
  return column;
}

/// Keeps rows that are still wanted, because the list may be open while the user types.
void show_strings(Gtk::ListStore& list, const std::vector<Glib::ustring>& strings) {
  auto row = list.children().begin();
  for (const auto& string : strings) {
    while (row && row->get_value(column().text).raw() < string.raw()) row = list.erase(row);
    if (!row || row->get_value(column().text).raw() != string.raw()) {
      row = list.insert(row);
      (*row)[column().text] = string;
    }
    ++row;
  }
  while (row) row = list.erase(row);
}

}  // namespace

NameEntry::NameEntry(zemblar::Object& object) : object_(&object) {
  renamed_ = object.property_name().signal_changed().connect([this] { follow(); });
  follow();
}

void NameEntry::offer(StringPool& pool) {
  offered_ = offer_strings(*this, {});
  pool_ = &pool;
  pool_changed_ = pool.signal_changed().connect([this] { follow_pool(); });
  follow_pool();
}

// Leaves out the object's own name, which the pool contains while it is being typed.
void NameEntry::follow_pool() {
  if (!pool_) return;
  auto strings = pool_->get_all();
  const auto own = object_ ? object_->get_name().raw() : std::string();
  std::erase_if(strings, [&own](const auto& string) { return string.raw() == own; });
  show_strings(*offered_.operator->(), strings);
}

void NameEntry::on_changed() {
  Gtk::Entry::on_changed();
  if (updating_ || !object_) return;
  // If the object's name differs from the typed text, showing it would move the cursor while the
  // user types.
  renamed_.block();
  object_->set_name(get_text());
  renamed_.unblock();
  follow_pool();
}

void NameEntry::on_activate() {
  finish();
  Gtk::Entry::on_activate();
}

bool NameEntry::on_focus_in_event(GdkEventFocus* event) {
  if (object_) before_ = object_->get_name();
  return Gtk::Entry::on_focus_in_event(event);
}

bool NameEntry::on_focus_out_event(GdkEventFocus* event) {
  finish();
  return Gtk::Entry::on_focus_out_event(event);
}

// For a taken name, the object has the typed text without its last letter; that name is not
// intended.
void NameEntry::finish() {
  if (!object_) return;
  const auto wanted = get_text();
  if (wanted.raw() != object_->get_name().raw() && !before_.empty()) {
    object_->set_name(before_);
    refused_ = !wanted.empty();
    if (refused_) refuse_name(Glib::ustring::compose(_("The name “%1” is taken."), wanted));
  } else if (std::exchange(refused_, false) || before_.raw() != wanted.raw()) {
    accept_name();
  }
  before_ = object_->get_name();
  follow();
}

void NameEntry::follow() {
  if (!object_) return;
  const UpdateGuard scope(updating_);
  show_text(*this, object_->get_name());
  follow_pool();
}

Glib::RefPtr<Gtk::ListStore> offer_strings(Gtk::Entry& entry,
                                           const std::vector<Glib::ustring>& strings) {
  const auto list = Gtk::ListStore::create(column());
  show_strings(*list.operator->(), strings);
  const auto completion = Gtk::EntryCompletion::create();
  completion->set_model(list);
  completion->set_text_column(column().text);
  completion->set_minimum_key_length(1);
  entry.set_completion(completion);
  return list;
}

}  // namespace zemblar

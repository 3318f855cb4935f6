#include "ui/name_entry.h"

#include <gtkmm/entrycompletion.h>
#include <gtkmm/liststore.h>

#include "core/i18n.h"
#include "core/status.h"
#include "core/string_pool.h"
#include "ui/following.h"
#include "ui/form.h"

namespace zemblar {
namespace {

struct TextColumn : Gtk::TreeModelColumnRecord {
  TextColumn() { add(text); }
  Gtk::TreeModelColumn<Glib::ustring> text;
};

}  // namespace

NameEntry::NameEntry(zemblar::Object& object) : object_(&object) {
  renamed_ = object.property_name().signal_changed().connect([this] { follow(); });
  follow();
}

void NameEntry::offer(const StringPool& pool) {
  offer_strings(*this, pool.get_all());
}

void NameEntry::on_changed() {
  Gtk::Entry::on_changed();
  if (following_ || !object_) return;
  // A name that differs from what was typed must not move the cursor under the fingers.
  renamed_.block();
  object_->set_name(get_text());
  renamed_.unblock();
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

// A name that is taken was followed up to its last letter but one: that is not what anybody meant.
void NameEntry::finish() {
  if (!object_) return;
  const auto wanted = get_text();
  if (wanted.raw() != object_->get_name().raw() && !before_.empty()) {
    object_->set_name(before_);
    if (!wanted.empty()) {
      complaint_ = Glib::ustring::compose(_("The name “%1” is taken."), wanted);
      set_status(complaint_);
    }
  } else if (!complaint_.empty()) {
    if (get_status() == complaint_) clear_status();
    complaint_.clear();
  }
  before_ = object_->get_name();
  follow();
}

void NameEntry::follow() {
  if (!object_) return;
  const Following scope(following_);
  show_text(*this, object_->get_name());
}

void offer_strings(Gtk::Entry& entry, const std::vector<Glib::ustring>& strings) {
  static const TextColumn columns;
  const auto list = Gtk::ListStore::create(columns);
  for (const auto& string : strings) (*list->append())[columns.text] = string;
  const auto completion = Gtk::EntryCompletion::create();
  completion->set_model(list);
  completion->set_text_column(columns.text);
  completion->set_minimum_key_length(1);
  entry.set_completion(completion);
}

}  // namespace zemblar

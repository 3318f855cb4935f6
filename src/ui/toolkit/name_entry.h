#pragma once

#include <gtkmm/entry.h>
#include <gtkmm/liststore.h>

#include "ui/toolkit/object_ref.h"

namespace zemblar {

class StringPool;

/// An entry that shows and sets the name of an object as it is typed.
///
/// The object ignores an empty name and one that a sibling has: on Return, and when the entry is
/// left, it gets back the name it had when typing began, the status line says so, and the entry
/// shows it.
class NameEntry : public Gtk::Entry {
 public:
  explicit NameEntry(zemblar::Object& object);

  /// Offers the strings of a pool while a name is being typed: those that are in it by then.
  void offer(StringPool& pool);
  /// As on Return: what is there now was meant.
  void finish();

 protected:
  void on_changed() override;
  void on_activate() override;
  bool on_focus_in_event(GdkEventFocus* event) override;
  bool on_focus_out_event(GdkEventFocus* event) override;

 private:
  void follow();
  void follow_pool();

  bool updating_ = false;
  Glib::ustring before_;  // the name when typing began; empty when nobody types
  bool refused_ = false;  // the name that was typed last
  ObjectRef<zemblar::Object> object_;
  ScopedConnection renamed_;
  const StringPool* pool_ = nullptr;  // whose strings are offered, if any
  ScopedConnection pool_changed_;
  Glib::RefPtr<Gtk::ListStore> offered_;
};

/// Offers strings while a person types into an entry. Returns the list of these strings.
Glib::RefPtr<Gtk::ListStore> offer_strings(Gtk::Entry& entry,
                                           const std::vector<Glib::ustring>& strings);

}  // namespace zemblar

#pragma once

#include <gtkmm/entry.h>
#include <gtkmm/liststore.h>

#include "ui/toolkit/object_ref.h"

namespace zemblar {

class StringPool;

/// An entry that shows the name of an object, and sets it with each letter typed.
///
/// The object ignores an empty name and one that a sibling has. If the typed text is such a name on
/// Return, or when the entry loses the focus, the object gets back its name from before typing, and
/// the entry shows that. For a taken name the status line says so.
class NameEntry : public Gtk::Entry {
 public:
  explicit NameEntry(zemblar::Object& object);

  /// Completes the typed text from the present strings of a pool.
  void offer(StringPool& pool);
  /// Ends typing, as Return does.
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
  Glib::ustring before_;  // the name when typing began; empty when the entry is not in use
  bool refused_ = false;  // whether the last typed name was refused
  ObjectRef<zemblar::Object> object_;
  ScopedConnection renamed_;
  const StringPool* pool_ = nullptr;  // source of completions, or null
  ScopedConnection pool_changed_;
  Glib::RefPtr<Gtk::ListStore> offered_;
};

/// Adds completion from `strings` to an entry. Returns the list of the strings.
Glib::RefPtr<Gtk::ListStore> offer_strings(Gtk::Entry& entry,
                                           const std::vector<Glib::ustring>& strings);

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/accelgroup.h>
#include <gtkmm/checkmenuitem.h>
#include <gtkmm/menu.h>

#include <functional>
#include <vector>

#include "ui/scripts/script_clipboard.h"
#include "ui/scripts/script_row.h"

namespace zemblar {

/// Cut, copy and paste of the selected line of the script editor, and switching it off: the keys,
/// and a menu that shows them.
///
/// What is copied is text; see copy_script.
class LineMenu : public sigc::trackable {
 public:
  /// `selected` is the selected row, `remove` removes its line, `select` selects another one.
  LineMenu(std::function<ScriptRow()> selected, std::function<void()> remove,
           std::function<void(ScriptLine&)> select);
  LineMenu(const LineMenu&) = delete;
  LineMenu& operator=(const LineMenu&) = delete;

  /// True if the key is one of this menu.
  bool on_key(const GdkEventKey& event);
  /// Opens the menu at the pointer, for a press of its button.
  void pop_up(const GdkEventButton& event);
  /// Opens the menu below an area of the screen.
  void pop_up(const Gdk::Rectangle& area);
  void close() { menu_.popdown(); }

 private:
  Gtk::MenuItem& add(const Glib::ustring& label, guint key, Gdk::ModifierType modifiers,
                     void (LineMenu::*act)());
  void show(Gtk::MenuItem& item, guint key, Gdk::ModifierType modifiers);
  void prepare();
  void cut();
  void copy();
  void copy_all();
  void paste();
  void toggle();
  void remove() { remove_(); }

  std::function<ScriptRow()> selected_;
  std::function<void()> remove_;
  std::function<void(ScriptLine&)> select_;
  Glib::RefPtr<Gtk::AccelGroup> shown_keys_;  // of no window: the keys come from `on_key`
  Gtk::Menu menu_;
  std::vector<Gtk::MenuItem*> for_lines_;
  Gtk::CheckMenuItem* off_ = nullptr;
  bool preparing_ = false;
  ClipboardReader clipboard_;
};

}  // namespace zemblar

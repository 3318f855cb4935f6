#include "ui/scripts/line_menu.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/separatormenuitem.h>

#include "core/i18n.h"
#include "scripts/script.h"
#include "scripts/script_text.h"
#include "ui/toolkit/popup.h"

namespace zemblar {
LineMenu::LineMenu(std::function<ScriptRow()> selected, std::function<void()> remove,
                   std::function<void(ScriptLine&)> select)
    : selected_(std::move(selected)),
      remove_(std::move(remove)),
      select_(std::move(select)),
      shown_keys_(Gtk::AccelGroup::create()) {
  const auto separate = [this] { menu_.append(*Gtk::manage(new Gtk::SeparatorMenuItem)); };
  for_lines_ = {&add(_("Cu_t"), GDK_x, Gdk::CONTROL_MASK, &LineMenu::cut),
                &add(_("_Copy"), GDK_c, Gdk::CONTROL_MASK, &LineMenu::copy)};
  add(_("_Paste"), GDK_v, Gdk::CONTROL_MASK, &LineMenu::paste);
  separate();
  off_ = Gtk::manage(new Gtk::CheckMenuItem(_("Switched _Off"), true));
  off_->signal_toggled().connect([this] {
    if (!preparing_) toggle();
  });
  show(*off_, GDK_slash, Gdk::CONTROL_MASK);
  for_lines_.push_back(off_);
  for_lines_.push_back(&add(_("_Delete"), GDK_Delete, Gdk::ModifierType(), &LineMenu::remove));
  separate();
  add(_("Copy Whole _Script"), 0, Gdk::ModifierType(), &LineMenu::copy_all);
  menu_.show_all();
}

Gtk::MenuItem& LineMenu::add(const Glib::ustring& label, guint key, Gdk::ModifierType modifiers,
                             void (LineMenu::*act)()) {
  auto* item = Gtk::manage(new Gtk::MenuItem(label, true));
  item->signal_activate().connect([this, act] { (this->*act)(); });
  show(*item, key, modifiers);
  return *item;
}

void LineMenu::show(Gtk::MenuItem& item, guint key, Gdk::ModifierType modifiers) {
  if (key != 0) {
    item.add_accelerator("activate", shown_keys_, key, modifiers, Gtk::ACCEL_VISIBLE);
  }
  menu_.append(item);
}

// --- Opening ---

void LineMenu::prepare() {
  const auto row = selected_();
  for (auto* item : for_lines_) item->set_sensitive(row.line != nullptr);
  preparing_ = true;
  off_->set_active(row.line && row.line->is_off());
  preparing_ = false;
}

void LineMenu::pop_up(const GdkEventButton& event) {
  prepare();
  menu_.popup(event.button, event.time);
}

void LineMenu::pop_up(const Gdk::Rectangle& area) {
  prepare();
  if (popup_below(menu_, area)) menu_.select_first(true);
}

// On some keyboards the slash needs Shift.
bool LineMenu::on_key(const GdkEventKey& event) {
  const auto modifiers = event.state & gtk_accelerator_get_default_mod_mask();
  const auto key = gdk_keyval_to_lower(event.keyval);
  if ((modifiers & ~GDK_SHIFT_MASK) != GDK_CONTROL_MASK) return false;
  if (key == GDK_slash || key == GDK_KP_Divide) {
    toggle();
    return true;
  }
  if (modifiers != GDK_CONTROL_MASK) return false;
  if (key == GDK_x) {
    cut();
  } else if (key == GDK_c || key == GDK_Insert) {
    copy();
  } else if (key == GDK_v) {
    paste();
  } else {
    return false;
  }
  return true;
}

// --- What it does ---

void LineMenu::cut() {
  copy();
  remove_();
}

void LineMenu::copy() {
  const auto row = selected_();
  if (row.line) copy_to_clipboard(*row.script, row.line);
}

void LineMenu::copy_all() {
  const auto row = selected_();
  if (row.script) copy_to_clipboard(*row.script, nullptr);
}

void LineMenu::paste() {
  clipboard_.ask([this](const Glib::ustring& text) {
    const auto row = selected_();
    if (!row.script) return;
    if (auto* line = paste_lines(*row.script, text, row.line)) select_(*line);
  });
}

void LineMenu::toggle() {
  const auto row = selected_();
  if (row.line) row.script->set_off(*row.line, !row.line->is_off());
}

}  // namespace zemblar

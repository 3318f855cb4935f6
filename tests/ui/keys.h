#pragma once

#include <gdk/gdkkeysyms.h>

#include <string>

#include "tests/ui/widget_search.h"
#include "ui/toolkit/edit_history.h"

namespace zemblar::test {

/// As the window manager does. Without it, Tab does not leave a button.
inline void give_focus(Gtk::Window& window) {
  GdkEvent event{};
  event.focus_change.type = GDK_FOCUS_CHANGE;
  event.focus_change.window = window.get_window()->gobj();
  event.focus_change.in = TRUE;
  gtk_main_do_event(&event);
}

/// A key as the window gets it: to the widget with the focus, then outwards.
inline void press_key(Gtk::Window& window, guint key, unsigned modifiers = 0,
                      GdkEventType type = GDK_KEY_PRESS) {
  GdkEvent event{};
  event.key.type = type;
  event.key.window = window.get_window()->gobj();
  event.key.keyval = key;
  GdkKeymapKey* keys = nullptr;
  int count = 0;
  if (!gdk_keymap_get_entries_for_keyval(nullptr, key, &keys, &count)) {
    throw std::runtime_error("no such key: " + std::to_string(key));
  }
  event.key.hardware_keycode = static_cast<guint16>(keys[0].keycode);
  event.key.group = static_cast<guint8>(keys[0].group);
  event.key.state = modifiers;
  if (keys[0].level != 0) event.key.state |= GDK_SHIFT_MASK;
  g_free(keys);
  EditHistory::dispatch(&event);
  handle_events();
}

inline void type_keys(Gtk::Window& window, const std::string& keys) {
  for (const char key : keys) press_key(window, static_cast<guint>(key));
}

}  // namespace zemblar::test

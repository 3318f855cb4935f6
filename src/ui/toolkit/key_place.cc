#include "ui/toolkit/key_place.h"

#include <gdk/gdkkeysyms.h>
#include <gtk/gtkmain.h>

#include <algorithm>
#include <array>
#include <vector>

namespace zemblar {
namespace {

struct Meaning {
  guint keyval;
  int group;  // keyboard group: a layout
  int level;  // shift level; 1 is with Shift
};

std::vector<Meaning> meanings_of(guint keycode) {
  GdkKeymapKey* keys = nullptr;
  guint* keyvals = nullptr;
  int count = 0;
  std::vector<Meaning> found;
  if (gdk_keymap_get_entries_for_keycode(nullptr, keycode, &keys, &keyvals, &count)) {
    for (int i = 0; i < count; ++i) found.push_back({keyvals[i], keys[i].group, keys[i].level});
    g_free(keys);
    g_free(keyvals);
  }
  return found;
}

bool is_digit(guint keyval) {
  return keyval >= GDK_KEY_0 && keyval <= GDK_KEY_9;
}

/// With Num Lock on, Shift makes keypad keys act as without Num Lock.
std::optional<unsigned> keypad_digit_of(const GdkEventKey& event) {
  static constexpr std::array shifted{GDK_KEY_KP_Insert,    GDK_KEY_KP_End,  GDK_KEY_KP_Down,
                                      GDK_KEY_KP_Page_Down, GDK_KEY_KP_Left, GDK_KEY_KP_Begin,
                                      GDK_KEY_KP_Right,     GDK_KEY_KP_Home, GDK_KEY_KP_Up,
                                      GDK_KEY_KP_Page_Up};
  if (event.keyval >= GDK_KEY_KP_0 && event.keyval <= GDK_KEY_KP_9) {
    return event.keyval - GDK_KEY_KP_0;
  }
  constexpr guint shift_and_num_lock = GDK_SHIFT_MASK | GDK_MOD2_MASK;
  if ((event.state & shift_and_num_lock) != shift_and_num_lock) return {};
  const auto* const found = std::ranges::find(shifted, static_cast<int>(event.keyval));
  if (found == shifted.end()) return {};
  return static_cast<unsigned>(found - shifted.begin());
}

}  // namespace

bool has_meaning(const GdkEventKey& event, std::initializer_list<guint> meanings) {
  const auto wanted = [&](guint keyval) {
    return std::ranges::find(meanings, keyval) != meanings.end();
  };
  const auto entries = meanings_of(event.hardware_keycode);
  return wanted(event.keyval) ||
         std::ranges::any_of(entries, [&](const auto& entry) { return wanted(entry.keyval); });
}

std::optional<unsigned> digit_of(const GdkEventKey& event) {
  if (const auto digit = keypad_digit_of(event)) return digit;
  std::optional<unsigned> other;
  for (const auto& entry : meanings_of(event.hardware_keycode)) {
    if (!is_digit(entry.keyval) || entry.level > 1) continue;
    if (entry.group == event.group) return entry.keyval - GDK_KEY_0;
    if (!other) other = entry.keyval - GDK_KEY_0;
  }
  if (!other && is_digit(event.keyval)) other = event.keyval - GDK_KEY_0;
  return other;
}

bool is_shift_held() {
  GdkModifierType state{};
  return gtk_get_current_event_state(&state) && (state & GDK_SHIFT_MASK) != 0;
}

}  // namespace zemblar

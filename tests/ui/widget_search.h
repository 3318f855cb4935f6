#pragma once

#include <atkmm/object.h>
#include <gtkmm/button.h>
#include <gtkmm/container.h>
#include <gtkmm/label.h>
#include <gtkmm/main.h>
#include <gtkmm/window.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zemblar::test {

template <typename T>
T* find_widget(Gtk::Widget& widget, const std::string& name) {
  auto* wanted = dynamic_cast<T*>(&widget);
  auto* button = dynamic_cast<Gtk::Button*>(&widget);
  const bool labelled = button && button->get_label().raw() == name;
  if (wanted && (name.empty() || labelled || widget.get_accessible()->get_name() == name)) {
    return wanted;
  }
  if (auto* container = dynamic_cast<Gtk::Container*>(&widget)) {
    for (auto* child : container->get_children()) {
      if (auto* found = find_widget<T>(*child, name)) return found;
    }
  }
  return nullptr;
}

/// The first widget of a class below `root` whose label or accessible name is `name`; an empty name
/// stands for any.
template <typename T>
T& get_widget(Gtk::Widget& root, const std::string& name = {}) {
  auto* found = find_widget<T>(root, name);
  if (!found) throw std::runtime_error("no widget: " + name);
  return *found;
}

/// The window of a class that is shown; null for none.
template <typename T>
T* shown_window() {
  for (auto* window : Gtk::Window::list_toplevels()) {
    auto* one = dynamic_cast<T*>(window);
    if (one && one->get_visible()) return one;
  }
  return nullptr;
}

/// The window of a title that is shown; null for none.
inline Gtk::Window* find_window(const std::string& title) {
  for (auto* window : Gtk::Window::list_toplevels()) {
    if (window->get_title() == title && window->get_visible()) return window;
  }
  return nullptr;
}

/// Whether a label in there has this text.
inline bool shows(Gtk::Widget& widget, const std::string& text) {
  if (auto* label = dynamic_cast<Gtk::Label*>(&widget)) return label->get_text().raw() == text;
  auto* container = dynamic_cast<Gtk::Container*>(&widget);
  if (!container) return false;
  const std::vector<Gtk::Widget*> children = container->get_children();
  return std::ranges::any_of(children, [&](auto* child) { return shows(*child, text); });
}

inline void handle_events() {
  while (Gtk::Main::events_pending()) Gtk::Main::iteration(false);
}

/// An event on a window, as the window system reports it.
inline auto make_event(GdkEventType type, GdkWindow* window) {
  std::unique_ptr<GdkEvent, decltype(&gdk_event_free)> event(gdk_event_new(type), gdk_event_free);
  event->any.window = GDK_WINDOW(g_object_ref(window));
  return event;
}

}  // namespace zemblar::test

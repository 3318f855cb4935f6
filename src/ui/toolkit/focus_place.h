#pragma once

#include <gtkmm/container.h>

#include <vector>

namespace zemblar {

/// Remembers the position of the focus in a container whose children are about to be replaced by
/// others of the same structure. The container must outlive this object.
class FocusPlace {
 public:
  explicit FocusPlace(Gtk::Container& container);

  /// Focuses the widget at the same position, in the last child if there are fewer now; if there is
  /// no such widget, `otherwise`. Does nothing if the focus was not in the container.
  void restore(Gtk::Widget& otherwise) const;

 private:
  [[nodiscard]] Gtk::Widget* find() const;

  Gtk::Container& container_;
  std::vector<std::size_t> path_;  // indexes of children, from the container down to the widget
};

/// Focuses a widget, or its first field, that has just been added to a scrolled container. Lays out
/// the container first, so that it can scroll to the widget.
void focus_added(Gtk::Widget& widget);

}  // namespace zemblar

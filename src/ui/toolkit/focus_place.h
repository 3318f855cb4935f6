#pragma once

#include <gtkmm/container.h>

#include <vector>

namespace zemblar {

/// The place of the focus within a container whose children are about to be replaced by others of
/// the same structure. The container outlives the place.
class FocusPlace {
 public:
  explicit FocusPlace(Gtk::Container& container);

  /// Gives the focus to the widget at the same place, in the last child if there are fewer now;
  /// without such a widget to `otherwise`. Leaves the focus alone if the container did not have it.
  void restore(Gtk::Widget& otherwise) const;

 private:
  [[nodiscard]] Gtk::Widget* find() const;

  Gtk::Container& container_;
  std::vector<std::size_t> path_;  // from the container to the widget, each an index of a child
};

/// Gives the focus to a widget, or to the first field in it, that has just been added to what
/// scrolls: lays it out first, so that it can be scrolled into sight.
void focus_added(Gtk::Widget& widget);

}  // namespace zemblar

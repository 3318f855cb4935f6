#pragma once

namespace Gtk {
class Container;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// Ends a managed widget with all managed widgets in it, at once and whoever else holds them.
///
/// Gtk::Container::remove is no way to do that: it takes a reference to a managed widget, which
/// nobody gives back.
void end_widget(Gtk::Widget& widget);

/// The same for each child of a container. All of them are managed.
void end_children(Gtk::Container& container);

}  // namespace zemblar

#pragma once

namespace Gtk {
class Container;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// Destroys a managed widget with all managed widgets in it at once, even if other references
/// exist.
///
/// Gtk::Container::remove does not do that: it takes a reference to a managed widget that is never
/// released.
void end_widget(Gtk::Widget& widget);

/// The same for each child of a container; all children must be managed.
void end_children(Gtk::Container& container);

}  // namespace zemblar

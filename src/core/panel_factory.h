#pragma once

#include <glibmm/refptr.h>

#include <functional>
#include <typeinfo>

namespace Gtk {
class SizeGroup;
class Widget;
}  // namespace Gtk

namespace zemblar {

class Object;

/// Which of the two panels of an object is asked for.
enum class PanelKind { own, properties };

/// Makes the widget of a panel; labels stand in the size group so that columns align.
using PanelFactory =
    std::function<Gtk::Widget*(Object&, const Glib::RefPtr<Gtk::SizeGroup>& labels)>;

/// The model hands out panels without knowing the toolkit: the interface registers a factory for
/// each class, by its exact type, before `main`.
void register_panel(const std::type_info& type, PanelKind kind, PanelFactory factory);

/// The panel of the object's class, or null when none is registered. The caller owns it.
Gtk::Widget* make_registered_panel(Object& object, PanelKind kind,
                                   const Glib::RefPtr<Gtk::SizeGroup>& labels);

}  // namespace zemblar

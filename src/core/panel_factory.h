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

/// The two panels that an object may have.
enum class PanelKind { own, properties };

/// Makes the widget of a panel. Its labels join the size group, so that columns align.
using PanelFactory =
    std::function<Gtk::Widget*(Object&, const Glib::RefPtr<Gtk::SizeGroup>& labels)>;

/// Registers the panel factory of one exact class. The user interface calls it before `main`, so
/// that the model can return panels without depending on the toolkit.
void register_panel(const std::type_info& type, PanelKind kind, PanelFactory factory);

/// The panel of the object's class, or null when none is registered. The caller owns it.
Gtk::Widget* make_registered_panel(Object& object, PanelKind kind,
                                   const Glib::RefPtr<Gtk::SizeGroup>& labels);

}  // namespace zemblar

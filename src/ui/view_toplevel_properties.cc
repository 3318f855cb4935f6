#include <gtkmm/alignment.h>
#include <gtkmm/button.h>

#include "core/i18n.h"
#include "core/panel_factory.h"
#include "core/toplevel.h"
#include "diagram/view.h"

namespace zemblar {
namespace {

constexpr int border = 6;

/// The panel of the container of views: makes a new one.
Gtk::Widget* make_panel(Object& views) {
  auto* button = Gtk::manage(new Gtk::Button(_("New _View"), true));
  button->signal_clicked().connect([&views] { views.add(new View); });
  auto* panel = new Gtk::Alignment(0.0, 0.0, 0.0, 0.0);
  panel->set_border_width(border);
  panel->add(*button);
  panel->show_all();
  return panel;
}

const bool registered = [] {
  register_panel(typeid(ViewToplevel), PanelKind::properties,
                 [](Object& object, const auto& /*labels*/) { return make_panel(object); });
  return true;
}();

}  // namespace
}  // namespace zemblar

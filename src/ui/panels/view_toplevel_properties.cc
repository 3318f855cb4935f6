#include <gtkmm/button.h>

#include "core/i18n.h"
#include "core/toplevel.h"
#include "diagram/view.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/made_object.h"

namespace zemblar {
namespace {

/// The panel of the container of views: makes a new one.
class ViewToplevelProperties : public Form {
 public:
  ViewToplevelProperties(ViewToplevel& views, const Labels& labels) : Form(labels) {
    auto* button = Gtk::manage(new Gtk::Button(_("New _View"), true));
    button->signal_clicked().connect([&views] { signal_object_made().emit(*views.add(new View)); });
    add_wide(*button);
  }
};

const PanelRegistration<ViewToplevel, ViewToplevelProperties> registration;

}  // namespace
}  // namespace zemblar

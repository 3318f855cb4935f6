#include "ui/properties_panel.h"

#include <gtkmm/scrolledwindow.h>

#include "core/i18n.h"

namespace zemblar {
namespace {

constexpr int list_height = 270;

}  // namespace

PropertiesPanel::PropertiesPanel()
    : selected_(_("Choose a view by its tab. Without a view, make one: select “Views” on the page "
                  "“All” and press New View.")),
      listed_(_("Select an object above to see its properties.")) {
  set_tab_pos(Gtk::POS_BOTTOM);
  auto* scrolled = Gtk::manage(new Gtk::ScrolledWindow);
  scrolled->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  scrolled->set_shadow_type(Gtk::SHADOW_IN);
  scrolled->add(list_);
  all_.pack1(*scrolled, true, false);
  all_.pack2(listed_, true, false);
  all_.set_position(list_height);
  append_page(selected_, _("_Selected"), true);
  append_page(all_, _("_All"), true);
  list_.signal_selected().connect(
      sigc::bind(sigc::mem_fun(listed_, &PanelView::show_object), nullptr));
}

}  // namespace zemblar

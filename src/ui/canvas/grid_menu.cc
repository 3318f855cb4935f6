#include "ui/canvas/grid_menu.h"

#include <gtkmm/menu.h>
#include <gtkmm/radiomenuitem.h>

#include <set>

#include "core/global_options.h"
#include "core/i18n.h"

namespace zemblar {
namespace {

/// The steps to offer. They include the present step, because the options file may have an unusual
/// one.
std::set<unsigned> steps() {
  return {0, 5, 10, 20, GlobalOptions::get().get_grid()};
}

}  // namespace

void append_grid_menu(Gtk::MenuShell& menu) {
  auto& options = GlobalOptions::get();
  auto* choices = Gtk::manage(new Gtk::Menu);
  Gtk::RadioMenuItem::Group group;
  for (const auto step : steps()) {
    const auto name =
        step == 0 ? Glib::ustring(_("_Off")) : Glib::ustring::compose(_("Every %1 Units"), step);
    auto* choice = Gtk::manage(new Gtk::RadioMenuItem(group, name, true));
    choice->set_active(step == options.get_grid());
    choice->signal_toggled().connect([choice, step] {
      if (choice->get_active()) GlobalOptions::get().set_grid(step);
    });
    options.property_grid().signal_changed().connect(sigc::track_obj(
        [choice, step] { choice->set_active(step == GlobalOptions::get().get_grid()); }, *choice));
    choices->append(*choice);
  }
  auto* item = Gtk::manage(new Gtk::MenuItem(_("_Grid"), true));
  item->set_tooltip_text(
      _("What is placed or dragged keeps to it. Hold Alt during a drag to be free of it."));
  item->set_submenu(*choices);
  menu.append(*item);
}

}  // namespace zemblar

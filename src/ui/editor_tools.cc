#include "ui/editor_tools.h"

#include <gtkmm/menu.h>

#include "core/i18n.h"
#include "ui/stock.h"

namespace zemblar {
namespace {

struct Tool {
  DiagramKind kind;
  const Gtk::StockID& icon;
  const char* add_new;
  const char* add_existing;
};

const Tool tools[] = {
    {DiagramKind::point, stock::add_point, N_("Add New Point"), N_("Add Existing Point")},
    {DiagramKind::zone, stock::add_zone, N_("Add New Zone (Block Section)"),
     N_("Add Existing Zone (Block Section)")},
    {DiagramKind::crossing, stock::add_crossing, N_("Add New Crossing"),
     N_("Add Existing Crossing")},
    {DiagramKind::scissor, stock::add_scissor, N_("Add New Scissor Point"),
     N_("Add Existing Scissor Point")},
    {DiagramKind::signal, stock::add_signal, N_("Add New Signal"), N_("Add Existing Signal")},
    {DiagramKind::label, stock::add_label, N_("Add Label for New Zone"),
     N_("Add Label for Existing Zone")},
};

}  // namespace

EditorTools::EditorTools(Gtk::Toolbar& toolbar) {
  for (const auto& tool : tools) {
    auto* button = Gtk::manage(new Gtk::MenuToolButton(tool.icon));
    auto* menu = Gtk::manage(new Gtk::Menu);
    auto choose = [this, kind = tool.kind](bool existing) { signal_chosen_.emit(kind, existing); };
    auto append = [&](const char* text, bool existing) {
      auto* item = Gtk::manage(new Gtk::MenuItem(_(text)));
      item->signal_activate().connect([choose, existing] { choose(existing); });
      menu->append(*item);
    };
    append(tool.add_new, false);
    append(tool.add_existing, true);
    menu->show_all();
    button->set_menu(*menu);
    button->set_tooltip_text(_(tool.add_new));
    button->set_arrow_tooltip_text(
        Glib::ustring::compose("%1 / %2", _(tool.add_new), _(tool.add_existing)));
    button->signal_clicked().connect([choose] { choose(false); });
    toolbar.append(*button);
    buttons_.push_back(button);
  }
}

void EditorTools::set_sensitive(bool sensitive) {
  for (auto* button : buttons_) button->set_sensitive(sensitive);
}

}  // namespace zemblar

#include "ui/windows/properties_panel.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/stock.h>

#include "core/i18n.h"

namespace zemblar {
namespace {

constexpr int list_height = 300;
constexpr int gap = 6;

}  // namespace

PropertiesPanel::PropertiesPanel()
    : selected_(_("Choose a view by its tab. Without a view, make one: select “Views” on the page "
                  "“All” and press New View.")),
      listed_(_("Select an object above to see its properties.")) {
  auto* scrolled = Gtk::manage(new Gtk::ScrolledWindow);
  scrolled->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  scrolled->set_shadow_type(Gtk::SHADOW_IN);
  scrolled->add(list_);
  auto* upper = Gtk::manage(new Gtk::VBox(false, gap));
  build_filter(*upper);
  upper->pack_start(*scrolled, true, true);
  all_.pack1(*upper, true, false);
  all_.pack2(listed_, true, false);
  all_.set_position(list_height);
  append_page(selected_, _("_Selected"), true);
  append_page(all_, _("_All"), true);
  list_.signal_selected().connect(
      sigc::bind(sigc::mem_fun(listed_, &PanelView::show_object), nullptr));
}

void PropertiesPanel::build_filter(Gtk::Box& box) {
  auto* row = Gtk::manage(new Gtk::HBox(false, gap));
  auto* label = Gtk::manage(new Gtk::Label(_("F_ind:"), true));
  label->set_mnemonic_widget(filter_);
  filter_.set_tooltip_text(_("Shows the objects whose names have this text in them"));
  filter_.signal_icon_press().connect(
      [this](Gtk::EntryIconPosition, const GdkEventButton*) { filter_.set_text(""); });
  filter_.signal_changed().connect([this] { find(); });
  filter_.signal_activate().connect([this] { list_.enter(); });
  filter_.signal_key_press_event().connect(sigc::mem_fun(*this, &PropertiesPanel::on_filter_key),
                                           false);
  row->set_border_width(gap);
  row->pack_start(*label, false, false);
  row->pack_start(filter_, true, true);
  box.pack_start(*row, false, false);
  nothing_found_.set_text(_("No name has this text in it."));
  nothing_found_.set_no_show_all();
  box.pack_start(nothing_found_, false, false);
}

void PropertiesPanel::reveal(Object& object) {
  set_current_page(page_num(all_));
  filter_.set_text("");
  list_.select(object);
}

void PropertiesPanel::find() {
  const auto text = filter_.get_text();
  list_.set_filter(text);
  if (text.empty()) {
    gtk_entry_set_icon_from_stock(filter_.gobj(), GTK_ENTRY_ICON_SECONDARY, nullptr);
  } else {
    filter_.set_icon_from_icon_name("edit-clear", Gtk::ENTRY_ICON_SECONDARY);
    filter_.set_icon_tooltip_text(_("Show all objects (Escape)"), Gtk::ENTRY_ICON_SECONDARY);
  }
  nothing_found_.set_visible(!list_.finds_any());
}

bool PropertiesPanel::on_filter_key(const GdkEventKey* event) {
  const bool modified = (event->state & gtk_accelerator_get_default_mod_mask()) != 0;
  if (modified || (event->keyval != GDK_KEY_Escape && event->keyval != GDK_KEY_Down)) return false;
  if (event->keyval == GDK_KEY_Down) {
    list_.enter();
  } else {
    filter_.set_text("");
  }
  return true;
}

}  // namespace zemblar

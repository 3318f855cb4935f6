#include "ui/windows/track_view.h"

#include <gtkmm/button.h>
#include <gtkmm/menu.h>
#include <gtkmm/separatormenuitem.h>
#include <gtkmm/separatortoolitem.h>

#include "core/i18n.h"
#include "core/property.h"
#include "ui/canvas/runtime_view.h"
#include "ui/toolkit/stock.h"
#include "ui/windows/file_menu.h"
#include "ui/windows/track_editor.h"

namespace zemblar {
namespace {

Gtk::Toolbar& with_separator(Gtk::Toolbar& toolbar) {
  toolbar.append(*Gtk::manage(new Gtk::SeparatorToolItem));
  return toolbar;
}

Gtk::Widget* make_canvas(View& view) {
  return scrolled(Gtk::manage(new RuntimeView(view)));
}

}  // namespace

void TrackView::open() {
  (new TrackView)->show();
}

TrackView::TrackView()
    : LayoutWindow(_("Zemblar 0.1 — Track View")),
      block_control_(_("_Enable Block Control"), true),
      block_control_follower_([this](Layout& layout, auto& /*connections*/) {
        bind_property(layout, "block-control", block_control_, "active");
      }),
      power_(with_separator(toolbar_)),
      pages_(make_canvas, ViewPages::Hidden::skip) {
  set_default_size(1000, 650);
  append_block_control_menu();
  append_editor_button();
  set_content(pages_, pages_);
  show_all_children();
  maximize();
}

void TrackView::append_block_control_menu() {
  auto* menu = append_submenu(menu_bar_, stock::block_control, get_accel_group());
  block_control_.set_tooltip_text(
      _("A mark for the whole layout. Locomotives are followed, and braked before a block that is "
        "not free, whether it is set or not."));
  menu->append(block_control_);
  menu->append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  power_.append_items(*menu);
}

void TrackView::append_editor_button() {
  auto* editor = Gtk::manage(new Gtk::Button(_("Open the Track _Editor"), true));
  editor->signal_clicked().connect(sigc::ptr_fun(TrackEditor::open));
  pages_.add_to_hint(*editor);
}

}  // namespace zemblar

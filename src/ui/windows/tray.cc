#include "ui/windows/tray.h"

#include <gtkmm/separatormenuitem.h>
#include <gtkmm/stock.h>

#include <vector>

#include "core/i18n.h"
#include "core/status.h"
#include "ui/windows/file_menu.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

// A desktop panel needs some time to show an icon.
constexpr auto place_check_delay = 6s;

}  // namespace

Tray::Tray(Layout& layout) : icon_(Gtk::StatusIcon::create(Gtk::Stock::CONNECT)) {
  append_document_items(layout);
  menu_.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  append_window_items(menu_);
  menu_.append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  append_stock_item(menu_, Gtk::Stock::QUIT, sigc::ptr_fun(quit));
  menu_.show_all();
  icon_->set_tooltip_text("Zemblar");
  icon_->signal_popup_menu().connect(
      [this](guint button, guint32 time) { menu_.popup(button, time); });
}

void Tray::append_document_items(Layout& layout) {
  append_stock_item(menu_, Gtk::Stock::NEW, {})->set_sensitive(false);
  const std::vector<Gtk::MenuItem*> items = {
      append_stock_item(menu_, Gtk::Stock::OPEN, sigc::mem_fun(layout, &Layout::open_dialog)),
      append_stock_item(menu_, Gtk::Stock::SAVE, sigc::mem_fun(layout, &Layout::save)),
      append_stock_item(menu_, Gtk::Stock::SAVE_AS, sigc::mem_fun(layout, &Layout::save_as)),
  };
  layout_ended_ = layout.signal_deleted().connect([items] {
    for (auto* item : items) item->set_sensitive(false);
  });
}

void Tray::check_place_later() {
  place_check_ = Timeout::once(place_check_delay, [icon = icon_] {
    if (icon->is_embedded() || !get_status().empty()) return;
    set_status(
        _("This desktop shows no status icons, so Zemblar's menu has no place there. Open "
          "windows from the menu View; Quit in the menu File ends the program."));
  });
}

}  // namespace zemblar

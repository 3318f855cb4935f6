#include "ui/windows/recovery_menu_item.h"

#include <glibmm/convert.h>
#include <glibmm/datetime.h>
#include <glibmm/main.h>

#include "core/i18n.h"
#include "core/recovery_copy.h"
#include "ui/status/trains_standing.h"

namespace zemblar {
namespace {

Glib::ustring label_of(const KeptText& kept) {
  const char* format = _("Unsaved Work on %1, %2");
  if (kept.kind == KeptText::Kind::replaced) {
    format = _("%1 before It Was Replaced, %2");
  } else if (kept.kind == KeptText::Kind::complete) {
    format = _("The Whole of %1, %2");
  } else if (kept.layout.empty()) {
    format = _("Unsaved Work without a File, %2");
  }
  const auto time = Glib::DateTime::create_now_local(kept.time / G_USEC_PER_SEC);
  return Glib::ustring::compose(format, Glib::filename_display_basename(kept.layout),
                                time.format("%x %X"));
}

/// Rebuilds the submenu later, because opening an entry changes the entries while its item is being
/// handled.
void open_later(const std::string& file) {
  Glib::signal_idle().connect_once([file] {
    when_trains_stand([file] {
      if (auto* copies = RecoveryCopy::get()) copies->open(file);
    });
  });
}

}  // namespace

RecoveryMenuItem::RecoveryMenuItem() : Gtk::MenuItem(_("_Recover Unsaved Work"), true) {
  if (auto* copies = RecoveryCopy::get()) {
    changed_ = copies->signal_changed().connect(sigc::mem_fun(*this, &RecoveryMenuItem::fill));
  }
  fill();
}

void RecoveryMenuItem::fill() {
  auto* menu = Gtk::manage(new Gtk::Menu);
  if (auto* copies = RecoveryCopy::get()) {
    for (const auto& entry : copies->offered()) {
      auto* item = Gtk::manage(new Gtk::MenuItem(label_of(entry.about)));
      item->signal_activate().connect([file = entry.file] { open_later(file); });
      menu->append(*item);
    }
  }
  set_sensitive(!menu->items().empty());
  menu->show_all();
  set_submenu(*menu);
}

}  // namespace zemblar

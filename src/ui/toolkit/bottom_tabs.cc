#include "ui/toolkit/bottom_tabs.h"

namespace zemblar {

// The toolkit always enters a page at its first field, even when the focus moves backwards.
bool BottomTabs::on_focus(Gtk::DirectionType direction) {
  auto* page = get_nth_page(get_current_page());
  const bool enters = direction == Gtk::DIR_TAB_BACKWARD && is_focus() && page;
  return (enters && page->child_focus(direction)) || Gtk::Notebook::on_focus(direction);
}

}  // namespace zemblar

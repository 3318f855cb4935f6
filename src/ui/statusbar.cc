#include "ui/statusbar.h"

#include "core/status.h"

namespace zemblar {

Statusbar::Statusbar() {
  set_has_resize_grip(false);
  push(get_status(), 0);
  signal_status_changed().connect(sigc::mem_fun(*this, &Statusbar::refresh));
}

// The tooltip shows what a narrow window cuts off.
void Statusbar::refresh() {
  const auto text = get_status();
  pop(0);
  push(text, 0);
  set_tooltip_text(text);
}

}  // namespace zemblar

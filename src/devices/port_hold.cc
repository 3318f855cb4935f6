#include "devices/port_hold.h"

#include <cerrno>
#include <utility>

#include "core/i18n.h"

namespace zemblar {

bool PortHold::take(SerialPort* port, const std::function<void()>& removed) {
  if (port_ || port->is_held()) return false;
  port->reference();
  port_ = Glib::RefPtr<SerialPort>(port);
  port->set_held(true);
  removed_ = sigc::connection(port->signal_removed().connect(removed));
  return true;
}

void PortHold::let_go() {
  removed_.disconnect();
  const auto port = std::exchange(port_, {});
  if (!port) return;
  port->close();
  port->set_held(false);
}

Glib::ustring why_not_opened(const Glib::ustring& device, const SerialPort& port,
                             const Gio::Error& error) {
  return Glib::ustring::compose(
      error.code() == EACCES
          ? _("%1 may not use the port %2. Join the group that owns it, often “dialout”.")
          : _("%1 cannot open the port %2: is another program using it?"),
      device, port.port_name);
}

}  // namespace zemblar

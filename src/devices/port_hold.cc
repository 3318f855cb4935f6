#include "devices/port_hold.h"

#include <grp.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "core/i18n.h"

namespace zemblar {
namespace {

/// The group that may use a device; the usual one when that cannot be found out.
std::string owning_group(const std::string& path) {
  struct stat status {};
  const auto* group = stat(path.c_str(), &status) == 0 ? getgrgid(status.st_gid) : nullptr;
  return group ? group->gr_name : "dialout";
}

}  // namespace

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
  const auto* text = error.code() == EACCES
                         ? _("%1 may not use the port %2: join the group “%3” and log in again.")
                         : _("%1 cannot open the port %2: is another program using it?");
  return Glib::ustring::compose(text, device, port.port_name, owning_group(port.port_name));
}

}  // namespace zemblar

#include "devices/port/port_hold.h"

#include <grp.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "core/i18n.h"
#include "devices/port/port_user.h"

namespace zemblar {
namespace {

/// The group whose members may use a device file; the usual one if that is unknown.
std::string owning_group(const std::string& path) {
  struct stat status {};
  const auto* group = stat(path.c_str(), &status) == 0 ? getgrgid(status.st_gid) : nullptr;
  return group ? group->gr_name : "dialout";
}

Glib::ustring why_busy(const Glib::ustring& device, const std::string& path) {
  const auto user = program_using(path);
  if (!user) {
    return Glib::ustring::compose(
        _("%1 cannot open the port %2: another program is using it. Look for a terminal, a modem "
          "manager or another program for model railways."),
        device, path);
  }
  return Glib::ustring::compose(
      _("%1 cannot open the port %2: the program “%3” (process %4) is using it."), device, path,
      user->name, user->process);
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
  const auto code = static_cast<int>(error.code());
  const auto& path = port.port_name;
  if (code == EBUSY) return why_busy(device, path);
  if (code == EACCES) {
    return Glib::ustring::compose(
        _("%1 may not use the port %2: join the group “%3” and log in again."), device, path,
        owning_group(path));
  }
  return Glib::ustring::compose(_("%1 cannot open the port %2: %3."), device, path,
                                g_strerror(code));
}

}  // namespace zemblar

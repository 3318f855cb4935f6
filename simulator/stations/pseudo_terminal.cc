#include "simulator/stations/pseudo_terminal.h"

#include <fcntl.h>
#include <glibmm/main.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace zemblar::simulator {

PseudoTerminal::PseudoTerminal() : fd_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
  char name[64];
  if (fd_ < 0 || grantpt(fd_) != 0 || unlockpt(fd_) != 0 ||
      ptsname_r(fd_, name, sizeof name) != 0) {
    if (fd_ >= 0) close(fd_);
    throw std::runtime_error("no pseudo-terminal to be had");
  }
  path_ = name;
  keep_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  readable_ = Glib::signal_io().connect([this](Glib::IOCondition) { return receive(); }, fd_,
                                        Glib::IO_IN | Glib::IO_HUP | Glib::IO_ERR);
}

void PseudoTerminal::send(std::string_view bytes) const {
  // What the program does not read in time is lost, as on a line.
  if (fd_ >= 0) [[maybe_unused]]
    const auto sent = write(fd_, bytes.data(), bytes.size());
}

void PseudoTerminal::hang_up() {
  readable_.disconnect();
  if (keep_ >= 0) close(std::exchange(keep_, -1));
  if (fd_ >= 0) close(std::exchange(fd_, -1));
}

bool PseudoTerminal::receive() {
  char buffer[256];
  const auto count = read(fd_, buffer, sizeof buffer);
  if (count <= 0) return count < 0;
  if (listener_) listener_({buffer, static_cast<std::size_t>(count)});
  return true;
}

}  // namespace zemblar::simulator

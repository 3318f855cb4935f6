#pragma once

#include <giomm/error.h>

#include <functional>

#include "devices/port/serial_port.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// The answer of a slot that was offered a port. libsigc++ asks no slot that has ended during the
/// emission, and passes on a default answer that it never set: here that is a refusal.
class PortTaken {
 public:
  PortTaken(bool taken = false) : taken_(taken) {}
  operator bool() const { return taken_; }

 private:
  bool taken_;
};

/// Asks until one has taken the port.
struct FirstToTake {
  using result_type = bool;
  template <typename Iterator>
  bool operator()(Iterator slot, Iterator end) const {
    for (; slot != end; ++slot) {
      if (*slot) return true;
    }
    return false;
  }
};

/// Offers a port; a slot that takes it returns true, and those after it are not asked. A slot may
/// suspend, and other slots and offers may come and go meanwhile.
using PortOffer = sigc::signal<PortTaken, SerialPort*>::accumulated<FirstToTake>;

/// A device's hold on the port that it has taken. No other device gets that port meanwhile.
class PortHold {
 public:
  ~PortHold() { let_go(); }

  /// False when this holds a port already, or somebody else holds that one. Calls `removed` when
  /// the hardware goes; the hold is still there then.
  bool take(SerialPort* port, const std::function<void()>& removed);
  /// Closes the port, which may go to others now.
  void let_go();

  /// Null without a port.
  [[nodiscard]] const Glib::RefPtr<SerialPort>& port() const { return port_; }
  explicit operator bool() const { return static_cast<bool>(port_); }

 private:
  Glib::RefPtr<SerialPort> port_;
  ScopedConnection removed_;
};

/// For the status line: why a device could not open its port, and what to do about that.
[[nodiscard]] Glib::ustring why_not_opened(const Glib::ustring& device, const SerialPort& port,
                                           const Gio::Error& error);

}  // namespace zemblar

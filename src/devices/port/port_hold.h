#pragma once

#include <giomm/error.h>

#include <functional>

#include "devices/port/serial_port.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// The answer of a slot that was offered a port. If a slot is disconnected during the emission,
/// libsigc++ returns a default-constructed answer for it, which here means a refusal.
class PortTaken {
 public:
  PortTaken(bool taken = false) : taken_(taken) {}
  operator bool() const { return taken_; }

 private:
  bool taken_;
};

/// Calls slots until one has taken the port.
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

/// Offers a port. A slot that takes the port returns true, and later slots are not called. A slot
/// may suspend; other slots and offers may come and go meanwhile.
using PortOffer = sigc::signal<PortTaken, SerialPort*>::accumulated<FirstToTake>;

/// A device's ownership of the port that it has taken. No other device gets the port meanwhile.
class PortHold {
 public:
  ~PortHold() { let_go(); }

  /// Takes a port. False if this holds a port already, or another device holds that port. Calls
  /// `removed` when the hardware is unplugged, while the port is still held.
  bool take(SerialPort* port, const std::function<void()>& removed);
  /// Closes and releases the port, so that other devices can take it.
  void let_go();

  /// The held port, or null.
  [[nodiscard]] const Glib::RefPtr<SerialPort>& port() const { return port_; }
  explicit operator bool() const { return static_cast<bool>(port_); }

 private:
  Glib::RefPtr<SerialPort> port_;
  ScopedConnection removed_;
};

/// A text for the status line: why a device could not open its port, and what to do.
[[nodiscard]] Glib::ustring why_not_opened(const Glib::ustring& device, const SerialPort& port,
                                           const Gio::Error& error);

}  // namespace zemblar

#pragma once

#include "devices/port/port_hold.h"

namespace zemblar {

/// The serial port of a LI-USB.
///
/// Whoever finds the hardware makes the port, keeps it while the hardware is there, offers it, and
/// calls `remove` when the hardware has gone. A port that nobody holds can be offered again.
class SerialPortLIUSB : public SerialPort {
 public:
  static Glib::RefPtr<SerialPortLIUSB> create(const HWDevice& record,
                                              std::unique_ptr<SerialLine> line = make_tty_line());

  /// How well the class fits the hardware: 20 when it is a LI-USB with a port, else 0.
  [[nodiscard]] static int score(const HWDevice& record);

  /// True when somebody takes the port; those after are not asked. A new LI-USB in the current
  /// layout takes one that nobody waits for. Does nothing while the port is held.
  bool offer();
  /// A slot that takes the port returns true.
  static PortOffer& signal_attached();

 private:
  using SerialPort::SerialPort;
};

}  // namespace zemblar

#pragma once

#include "devices/port/port_hold.h"

namespace zemblar {

/// The serial port of a LI-USB.
///
/// HWList makes the port when it finds the hardware, offers it, and calls `remove` when the
/// hardware is unplugged. A port that no device holds can be offered again.
class SerialPortLIUSB : public SerialPort {
 public:
  static Glib::RefPtr<SerialPortLIUSB> create(const HWDevice& record,
                                              std::unique_ptr<SerialLine> line = make_tty_line());

  /// How well the class fits the hardware: 20 for a LI-USB with a port, else 0.
  [[nodiscard]] static int score(const HWDevice& record);

  /// Offers the port to waiting devices until one takes it; if none does, makes a new LI-USB in the
  /// current layout. True if the port is taken. Does nothing while the port is held.
  bool offer();
  /// A slot that takes the port returns true.
  static PortOffer& signal_attached();

 private:
  using SerialPort::SerialPort;
};

}  // namespace zemblar

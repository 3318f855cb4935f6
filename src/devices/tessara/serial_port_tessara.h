#pragma once

#include "core/status.h"
#include "devices/port/port_hold.h"
#include "runtime/timer.h"

namespace zemblar {

/// The serial port of a Tessara device: a bus master, or a device that has a port of its own.
///
/// HWList makes the port when it finds the hardware, offers it, and calls `remove` when the
/// hardware is unplugged. A port that no device holds can be offered again.
class SerialPortTessara : public SerialPort {
 public:
  static Glib::RefPtr<SerialPortTessara> create(const HWDevice& record,
                                                std::unique_ptr<SerialLine> line = make_tty_line());

  /// How well the class fits the hardware: 20 for a Tessara device with a port, else 0.
  [[nodiscard]] static int score(const HWDevice& record);

  /// Finds the device for the hardware, on a fiber: a waiting device recognises it by its serial
  /// number. If there is none, makes a new device in the current layout, of the class that the
  /// hardware reports. If the port cannot be opened, for example because another program uses it,
  /// or the hardware does not answer, tries again every five seconds. Does nothing while the port
  /// is held. A call during an offer starts another offer after it.
  void offer();
  /// A slot that takes the port returns true. The slots run on a fiber and may suspend.
  static PortOffer& signal_attached();

 private:
  SerialPortTessara(const HWDevice& record, std::unique_ptr<SerialLine> line);

  void find_owner();
  bool can_be_opened();
  bool make_device();
  void try_later(StatusNote& note, const Glib::ustring& why);

  bool offering_ = false;
  bool offer_again_ = false;
  StatusNote unopened_;  // why the port cannot be opened
  StatusNote unknown_;   // why the hardware is not recognised
  Timeout retry_;
};

}  // namespace zemblar

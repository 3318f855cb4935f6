#pragma once

#include "core/status.h"
#include "devices/port/port_hold.h"
#include "runtime/timer.h"

namespace zemblar {

/// The serial port of a Tessara device: a bus master, or a device that has a port of its own.
///
/// Whoever finds the hardware makes the port, keeps it while the hardware is there, offers it, and
/// calls `remove` when the hardware has gone. A port that nobody holds can be offered again.
class SerialPortTessara : public SerialPort {
 public:
  static Glib::RefPtr<SerialPortTessara> create(const HWDevice& record,
                                                std::unique_ptr<SerialLine> line = make_tty_line());

  /// How well the class fits the hardware: 20 when it is a Tessara device with a port, else 0.
  [[nodiscard]] static int score(const HWDevice& record);

  /// Finds out, on a fiber, whose hardware this is: a device that waits for it knows it by its
  /// serial number. When there is none, a new device in the current layout takes the port, of the
  /// class that the hardware says it is. A port that cannot be opened, as while another program has
  /// it, and hardware that does not answer are tried again every five seconds. Does nothing while
  /// the port is held; what comes while an offer is under way is another one after it.
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
  StatusNote unopened_;  // why it cannot be opened
  StatusNote unknown_;   // why nobody knows what is plugged in
  Timeout retry_;
};

}  // namespace zemblar

#pragma once

#include <sigc++/signal.h>

#include <memory>
#include <vector>

#include "devices/port/hw_device.h"
#include "devices/port/serial_line.h"

namespace zemblar {

/// The seam under HWList: the source of the list of serial hardware.
class HWSource {
 public:
  virtual ~HWSource() = default;

  /// All hardware that is plugged in now.
  [[nodiscard]] virtual std::vector<HWDevice> list() = 0;
  /// The line to the port of one of them.
  [[nodiscard]] virtual std::unique_ptr<SerialLine> line_to(const HWDevice& /*record*/) {
    return make_tty_line();
  }
  /// Hardware was plugged in or unplugged. Emitted on the main loop.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 protected:
  HWSource() = default;

 private:
  sigc::signal<void> signal_changed_;
};

/// The system's device manager, by GUdev.
[[nodiscard]] std::unique_ptr<HWSource> make_udev_source();

}  // namespace zemblar

#include "devices/liusb/serial_port_liusb.h"

#include "core/layout.h"
#include "core/toplevel.h"
#include "devices/liusb/device_liusb.h"
#include "devices/port/hw_list.h"

namespace zemblar {
namespace {

const HWList::Kind::Registration registration(port_kind<SerialPortLIUSB>());

}  // namespace

Glib::RefPtr<SerialPortLIUSB> SerialPortLIUSB::create(const HWDevice& record,
                                                      std::unique_ptr<SerialLine> line) {
  return Glib::RefPtr<SerialPortLIUSB>(new SerialPortLIUSB(record, std::move(line)));
}

int SerialPortLIUSB::score(const HWDevice& record) {
  if (record.port_name.empty()) return 0;
  return record.has_hardware_id("USB\\VID_0403&PID_D780") ||
                 record.has_hardware_id("FTDIBUS\\COMPORT&VID_0403&PID_D780")
             ? 20
             : 0;
}

bool SerialPortLIUSB::offer() {
  if (is_held()) return false;
  if (signal_attached().emit(this)) return true;
  if (!Layout::exists() || Layout::get().is_emptying()) return false;
  return Layout::get().get_devices().add(new LIUSB)->attach(this);
}

PortOffer& SerialPortLIUSB::signal_attached() {
  static PortOffer signal;
  return signal;
}

}  // namespace zemblar

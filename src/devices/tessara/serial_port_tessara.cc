#include "devices/tessara/serial_port_tessara.h"

#include <algorithm>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/toplevel.h"
#include "devices/port/hw_list.h"
#include "devices/tessara/tessara_class.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

constexpr std::chrono::seconds retry_time(5);

const HWList::Kind::Registration registration(port_kind<SerialPortTessara>());

bool takes_devices() {
  return Layout::exists() && !Layout::get().is_emptying();
}

/// True if a device of the layout has this serial number. It has not recognised its hardware,
/// because an answer was lost.
bool is_awaited(const Layout& layout, const std::string& serial_nr) {
  return std::ranges::any_of(layout.get_devices(), [&](const Object* object) {
    const auto* device = dynamic_cast<const DeviceTessara*>(object);
    return device && device->waits_for(serial_nr);
  });
}

}  // namespace

Glib::RefPtr<SerialPortTessara> SerialPortTessara::create(const HWDevice& record,
                                                          std::unique_ptr<SerialLine> line) {
  return Glib::RefPtr<SerialPortTessara>(new SerialPortTessara(record, std::move(line)));
}

// 8 data bits, 1 stop bit, no parity, no handshake.
SerialPortTessara::SerialPortTessara(const HWDevice& record, std::unique_ptr<SerialLine> line)
    : SerialPort(record, std::move(line)) {
  set_baud(115200);
  signal_removed().connect([this] {
    retry_.cancel();
    unopened_.clear();
    unknown_.clear();
  });
}

int SerialPortTessara::score(const HWDevice& record) {
  if (record.port_name.empty()) return 0;
  return record.has_hardware_id("USB\\VID_16D0&PID_064D") ? 20 : 0;
}

PortOffer& SerialPortTessara::signal_attached() {
  static PortOffer signal;
  return signal;
}

void SerialPortTessara::offer() {
  if (offering_) {
    offer_again_ = true;
  } else if (!is_held()) {
    offering_ = true;
    reference();
    fiber::spawn([self = Glib::RefPtr<SerialPortTessara>(this)] { self->find_owner(); });
  }
}

void SerialPortTessara::find_owner() {
  do {
    offer_again_ = false;
    if (!can_be_opened()) break;
    if (signal_attached().emit(this) || make_device()) unknown_.clear();
  } while (offer_again_ && !is_held() && !is_removed());
  offering_ = false;
}

// Opens the port first for its error message: the devices would only find that there is no answer.
bool SerialPortTessara::can_be_opened() {
  try {
    open();
    close();
    unopened_.clear();
    return true;
  } catch (const Gio::Error& error) {
    try_later(unopened_, why_not_opened(_("The Tessara bus"), *this, error));
    return false;
  }
}

void SerialPortTessara::try_later(StatusNote& note, const Glib::ustring& why) {
  if (is_removed()) return;
  retry_ = Timeout::once(retry_time, [this] { offer(); });
  note.show(why);
}

/// Makes a new device for the port. True on success.
bool SerialPortTessara::make_device() {
  if (!takes_devices()) return false;
  const auto* layout = &Layout::get();
  try {
    DetachedPtr<DeviceTessara> device(TessaraClass::create_found(this));
    if (!device) throw std::runtime_error(_("no kind of device that it knows"));
    if (takes_devices() && layout == &Layout::get() &&
        !is_awaited(*layout, device->get_serial_nr())) {
      layout->get_devices().add(device.release());
      return true;
    }
    offer_again_ = takes_devices();
  } catch (const std::exception& error) {
    // The hardware may not have power yet.
    try_later(unknown_,
              Glib::ustring::compose(
                  _("What is plugged in at %1 does not answer as a Tessara device does (%2)."),
                  port_name, error.what()));
  }
  return false;
}

}  // namespace zemblar

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devices/device.h"
#include "devices/port/port_hold.h"
#include "devices/tessara/tessara_exchange.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

class DeviceTessaraBus;

/// A device of the Tessara family: at an address of a bus, or on a serial port of its own.
///
/// Its serial number says which piece of hardware it is. A device from a layout file without a bus
/// waits for its hardware and takes the port on which that answers; unplugged, it waits again. One
/// that has a port and fell out of service tries again each second. One on a bus is looked for by
/// the bus.
///
/// Its link waits for an answer when it has been silent for a second, or does not come to an end. A
/// device on a bus that has gone or is silent gives no reason of its own: its bus does.
///
/// Hardware with another serial number than the one that the device is known by stays out of
/// service. A device without a number takes the one that it reads, when it reads the same info
/// block and the same number twice.
class DeviceTessara : public Device {
 public:
  /// A temporary one, which asks hardware what it is: on no port yet, or at an address of a bus.
  DeviceTessara() : DeviceTessara(nullptr, 0) {}
  DeviceTessara(DeviceTessaraBus* bus, std::uint8_t address);
  ~DeviceTessara() override;

  /// The bus that it hangs on; null for one with a port of its own.
  [[nodiscard]] DeviceTessaraBus* get_bus() const { return bus_; }
  [[nodiscard]] std::uint8_t get_address() const { return address_; }
  /// Does nothing without a bus, and when another device on it has that address.
  void set_address(std::uint8_t address);
  void restore(const EntryChange& change) override;
  [[nodiscard]] const std::string& get_serial_nr() const { return serial_nr_; }
  /// It has no port, and is to have that of the hardware with this number.
  [[nodiscard]] bool waits_for(const std::string& serial_nr) const {
    return !bus_ && !hold_ && serial_nr_ == serial_nr;
  }
  /// Which speeds it knows, by index; empty until a class has read them.
  [[nodiscard]] const std::vector<bool>& get_speeds() const { return speeds_; }

  // The rest is for fibers. All throw TessaraCmdFailed, and DeviceInactiveException while they wait
  // for their turn.

  /// Takes the port and comes into service. Throws std::runtime_error with the reason when the
  /// hardware is not what the device can work with.
  void come_up_on(SerialPort* port);
  /// The same at its address on the bus. Throws std::runtime_error "No Device" when nobody answers
  /// there.
  void come_up_on_bus();

  /// A message and its answer. Only inside a BusyLock on this device.
  std::string command(const std::string& bytes);
  /// The info block, in a conversation of its own.
  std::string read_info();
  std::string read_serial();
  /// Talks at that speed from now on, and so does the bus. Nothing without a bus.
  void set_speed(std::uint8_t index);
  /// Whether it answers at its address. One that has restarted, and so fell back to speed 0, is
  /// left at that. False without a bus.
  bool find_on_bus();
  /// The same for one that was told a speed to which the bus could not follow, or the other way
  /// round.
  bool find_at_told_speed();

  // What its bus has learned of it.

  /// It was looked for in vain.
  void note_absence();
  /// The bus goes out of service.
  void note_end_of_bus();

  Glib::PropertyProxy<std::uint8_t> property_address() { return {this, "address"}; }
  Glib::PropertyProxy_ReadOnly<Device*> property_bus() { return {this, "bus"}; }

 protected:
  /// At the address, unless `bus` is null.
  DeviceTessara(const Glib::ustring& name_format, DeviceTessaraBus* bus, std::uint8_t address);
  /// From a layout file: the keys `name`, `id`, `address` and `serial-nr`. The address must be
  /// there on a bus, and throws std::runtime_error "Parent is not an Tessara Bus" without one.
  DeviceTessara(const Glib::ustring& name_format, const YAML::Node& node, DeviceTessaraBus* bus);
  /// Writes those keys.
  void save_tessara(YAML::Emitter& out) const;

  /// Opens its port, if it has one.
  bool start() override;
  void stop() override;
  void on_deleting() override;

  /// The `start` of a class: asks the device who it is, and hands its info block to `set_up`, which
  /// does the rest. What `set_up` throws as std::runtime_error is the reason why the class cannot
  /// work with it.
  bool bring_up(const std::function<void(const std::string& info)>& set_up);
  /// Asks again, inside the BusyLock of `start`, before something is done for good because of that
  /// answer. Throws std::runtime_error when the answer is another one now.
  void confirm(const std::string& question, const std::string& answer);
  /// `set_speed` inside the BusyLock of `start`.
  void change_speed(std::uint8_t index);
  void set_speeds(const std::vector<bool>& speeds) { speeds_ = speeds; }
  /// Out of service after a failure, and why. What has a port tries again by itself.
  void give_up(const Glib::ustring& why);
  /// A sentence for that; empty on a bus that does not answer itself, which says so.
  [[nodiscard]] Glib::ustring why_no_answer() const;
  /// An answer that had to come did not. Told when none has come for a second.
  void note_silence();
  /// The exchange that is under way fails.
  void cut_exchange() { cancel_->cancel(); }

 private:
  void find_place();
  void register_properties();
  [[nodiscard]] Device* get_bus_device() const;
  void wait_for_hardware();
  bool claim(SerialPort* port);
  void lose_port();
  void try_again();
  void lose_line(SerialPort& port);
  bool find_at_speed(std::uint8_t index, std::uint8_t former);
  void come_up();
  std::string identify(const std::string& info);
  std::string ask(const std::string& question);

  std::string exchange(const std::string& bytes);

  // What it tells of its link.
  void note_origin();
  void note_answer();
  [[nodiscard]] Timeout when_answer_is_late();
  void note_late_answer(Clock::time_point asked);
  void note_failed_start(const TessaraCmdFailed& failure);
  void tell_down(const Glib::ustring& why);
  [[nodiscard]] bool was_in_service() const;
  [[nodiscard]] Glib::ustring why_not_plugged_in() const;
  [[nodiscard]] Glib::ustring why_no_bus() const;
  [[nodiscard]] Glib::ustring why_no_end() const;

  DeviceTessaraBus* bus_ = nullptr;
  std::uint8_t address_ = 0;
  std::vector<bool> speeds_;
  bool has_marked_address_ = false;
  std::uint8_t told_speed_ = 0;  // by index, the last one; whether it has heard that or not
  PortHold hold_;
  std::string serial_nr_;
  std::string fault_;  // why the class cannot work with the hardware; of the last `bring_up`
  std::optional<Clock::time_point> silent_since_;  // unless it has answered since
  Timeout retry_;
  // Each command has its own: it ends the exchange in flight.
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  ScopedConnection attached_;
  ScopedConnection bus_deleted_;
};

}  // namespace zemblar

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
/// The serial number identifies the hardware. A device from a layout file that is not on a bus
/// waits for its hardware and takes the port on which that answers; when unplugged, it waits again.
/// A device with a port that goes out of service tries again every second. The bus searches for a
/// device on a bus.
///
/// The link phase becomes `waiting_for_answer` when the device has not answered for a second, or
/// does not end an answer. If its bus is out of service or does not answer, the device gives no
/// reason itself; the bus does.
///
/// If the hardware has another serial number than the device, the device stays out of service. A
/// device without a serial number takes that of the hardware, after reading the same info block and
/// the same number twice.
class DeviceTessara : public Device {
 public:
  /// A temporary device that asks hardware what it is: without a port yet, or at an address of a
  /// bus.
  DeviceTessara() : DeviceTessara(nullptr, 0) {}
  DeviceTessara(DeviceTessaraBus* bus, std::uint8_t address);
  ~DeviceTessara() override;

  /// The bus of the device; null for a device with its own port.
  [[nodiscard]] DeviceTessaraBus* get_bus() const { return bus_; }
  [[nodiscard]] std::uint8_t get_address() const { return address_; }
  /// Does nothing without a bus, or if another device on the bus has the address.
  void set_address(std::uint8_t address);
  void restore(const EntryChange& change) override;
  [[nodiscard]] const std::string& get_serial_nr() const { return serial_nr_; }
  /// True if the device has this serial number, no port and no bus.
  [[nodiscard]] bool waits_for(const std::string& serial_nr) const {
    return !bus_ && !hold_ && serial_nr_ == serial_nr;
  }
  /// The speeds that the hardware supports, by index; empty until the derived class has read them.
  [[nodiscard]] const std::vector<bool>& get_speeds() const { return speeds_; }

  // The following are for fibers. All throw TessaraCmdFailed, and DeviceInactiveException if the
  // device goes out of service while they wait for their turn.

  /// Takes the port and comes into service. Throws std::runtime_error with the reason if the class
  /// does not support the hardware.
  void come_up_on(SerialPort* port);
  /// The same at the device's address on the bus. Throws std::runtime_error "No Device" if there is
  /// no answer.
  void come_up_on_bus();

  /// Sends a message and returns the answer. Only inside a BusyLock on this device.
  std::string command(const std::string& bytes);
  /// Each reads from the hardware, in a separate conversation.
  std::string read_info();
  std::string read_serial();
  /// Changes the speed of the hardware and of the bus for its address. Does nothing without a bus.
  void set_speed(std::uint8_t index);
  /// True if the hardware answers at its address. Also tries speed 0, to which the hardware returns
  /// when it restarts, and keeps that if it answers. False without a bus.
  bool find_on_bus();
  /// The same with the speed that was last sent to the hardware, for the case that only one side
  /// has changed its speed.
  bool find_at_sent_speed();

  // Called by the bus.

  /// The bus has searched for the device without success.
  void note_absence();
  /// The bus is going out of service.
  void note_end_of_bus();

  Glib::PropertyProxy<std::uint8_t> property_address() { return {this, "address"}; }
  Glib::PropertyProxy_ReadOnly<Device*> property_bus() { return {this, "bus"}; }

 protected:
  /// Without a bus the address is unused.
  DeviceTessara(const Glib::ustring& name_format, DeviceTessaraBus* bus, std::uint8_t address);
  /// Reads the keys `name`, `id`, `address` and `serial-nr` of a layout file. The address is
  /// required on a bus; without a bus, an address throws std::runtime_error "Parent is not an
  /// Tessara Bus".
  DeviceTessara(const Glib::ustring& name_format, const YAML::Node& node, DeviceTessaraBus* bus);
  /// Writes those keys.
  void save_tessara(YAML::Emitter& out) const;

  /// Opens the port, if the device has one.
  bool start() override;
  void stop() override;
  void on_deleting() override;

  /// Implements `start` of a derived class: identifies the hardware, and passes its info block to
  /// `set_up`, which does the rest. `set_up` throws std::runtime_error with the reason if the class
  /// does not support the hardware.
  bool bring_up(const std::function<void(const std::string& info)>& set_up);
  /// Asks again, inside the BusyLock of `start`, before an answer leads to a permanent change.
  /// Throws std::runtime_error if the answer differs.
  void confirm(const std::string& question, const std::string& answer);
  /// `set_speed` inside the BusyLock of `start`.
  void change_speed(std::uint8_t index);
  void set_speeds(const std::vector<bool>& speeds) { speeds_ = speeds; }
  /// Goes out of service after a failure, with the reason for the link state. A device with a port
  /// tries again later.
  void give_up(const Glib::ustring& why);
  /// A sentence that the device does not answer; empty if its bus does not answer either, which
  /// says so itself.
  [[nodiscard]] Glib::ustring why_no_answer() const;
  /// Call when an expected answer is missing. Reported when there has been no answer for a second.
  void note_silence();
  /// Makes the exchange in progress fail.
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

  // Updates of the link state.
  void note_origin();
  void note_answer();
  [[nodiscard]] Timeout when_answer_is_late();
  void note_late_answer(Clock::time_point asked);
  void note_failed_start(const TessaraCmdFailed& failure);
  void report_down(const Glib::ustring& why);
  [[nodiscard]] bool was_in_service() const;
  [[nodiscard]] Glib::ustring why_not_plugged_in() const;
  [[nodiscard]] Glib::ustring why_no_bus() const;
  [[nodiscard]] Glib::ustring why_no_end() const;

  DeviceTessaraBus* bus_ = nullptr;
  std::uint8_t address_ = 0;
  std::vector<bool> speeds_;
  bool has_marked_address_ = false;
  std::uint8_t sent_speed_ = 0;  // index of the speed last sent to the hardware, received or not
  PortHold hold_;
  std::string serial_nr_;
  std::string fault_;  // why the class does not support the hardware, from the last `bring_up`
  std::optional<Clock::time_point>
      silent_since_;  // start of the present silence; no value after an answer
  Timeout retry_;
  // Cancels the exchange in progress; each command has its own.
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  ScopedConnection attached_;
  ScopedConnection bus_deleted_;
};

}  // namespace zemblar

#pragma once

#include <bitset>

#include "devices/device_ref.h"
#include "devices/tessara/device_tessara.h"

namespace zemblar {

/// The master of a Tessara bus: relays messages to up to 256 devices, its children.
///
/// A scan searches for new devices at all addresses without a child; it tries all bus speeds at
/// each address, unless the master makes that unnecessary. While the master is in service, a
/// monitor searches once a second for each child that is out of service, and activates those that
/// answer.
///
/// Relaying a message is one conversation with the master, so that scan, monitor and the polls of
/// readers take turns. The number of tries is not limited, because a device may be slow; but a
/// relay that takes two seconds in all is given up, so that one device cannot block the others.
///
/// In a layout file: the keys `name`, `id`, `address` if it is itself on another bus, `serial-nr`,
/// and `devices` with its children if it has any.
class DeviceTessaraBus : public DeviceTessara {
 public:
  DeviceTessaraBus() : DeviceTessaraBus(nullptr, 0) {}
  DeviceTessaraBus(DeviceTessaraBus* bus, std::uint8_t address);
  explicit DeviceTessaraBus(const YAML::Node& node, DeviceTessaraBus* bus = nullptr);
  ~DeviceTessaraBus() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  [[nodiscard]] bool get_scanning() const { return scan_address_ >= 0; }
  /// Starts a scan at the first address, or ends the present one.
  void set_scanning(bool on);
  /// Progress of the scan, 0 to 1; 0 without a scan.
  [[nodiscard]] double get_scan_progress() const;

  /// Marks the address as used. False if it was already.
  bool mark_used(std::uint8_t address);
  void clear_used(std::uint8_t address) { used_.reset(address); }

  // The following are for fibers. All throw TessaraCmdFailed, and DeviceInactiveException if the
  // bus goes out of service while they wait for their turn.

  /// True if a device answers at the address within a tenth of a second. Does not throw
  /// TessaraCmdFailed.
  bool ping(std::uint8_t address);
  /// The index of the speed that the master uses for the address.
  std::uint8_t get_speed(std::uint8_t address);
  void set_speed(std::uint8_t address, std::uint8_t index);
  using DeviceTessara::set_speed;
  /// Sends a message to the device at the address, and returns the answer.
  std::string relay(std::uint8_t address, const std::string& bytes);

  Glib::PropertyProxy<bool> property_scanning() { return {this, "scanning"}; }
  Glib::PropertyProxy_ReadOnly<double> property_scan_progress() { return {this, "scan-progress"}; }

 protected:
  bool start() override;
  void stop() override;
  void on_deleting() override;

 private:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;

  void register_properties();
  void set_up(const std::string& info);

  std::string hear(const std::string& message);
  bool ping_once(std::uint8_t address, const bool& too_late);
  std::string fetch_answer(const bool& given_up);

  void watch_devices(const Cancel& cancel);
  void bring_back(const DeviceRef<DeviceTessara>& device);

  void scan(const Cancel& cancel);
  void look_at(std::uint8_t address, const Cancel& cancel);
  bool find_at_any_speed(std::uint8_t address, const Cancel& cancel);
  bool find_at_known_speed(std::uint8_t address, const Cancel& cancel);
  void add_found(std::uint8_t address);
  void show_scan(int address);
  void end_scan();

  std::uint8_t max_speed_ = 0;
  bool speed_scan_ = false;
  std::bitset<256> used_;
  std::bitset<256> joining_;  // addresses where a device was found and is being identified
  int scan_address_ = -1;     // -1 without a scan
  // Each scan and each monitor has its own cancellable.
  Cancel scan_cancel_;
  Cancel monitor_cancel_;
};

}  // namespace zemblar

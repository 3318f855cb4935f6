#pragma once

#include <bitset>

#include "devices/tessara/device_tessara.h"

namespace zemblar {

/// The master of a Tessara bus: relays messages to up to 256 devices, its children.
///
/// A scan looks for new devices at all addresses that no child has, for each at one bus speed after
/// the other unless the master need not. A monitor looks once a second for each child that is out
/// of service and brings back those that answer, from the master's start until it goes.
///
/// Relaying is one conversation with the master, so that scan, monitor and the polls of the readers
/// take turns. It has no limit on tries, as a device may take its time; but a whole relay that
/// takes two seconds is given up, so that one device cannot keep all others from being heard.
///
/// In a layout file: the keys `name`, `id`, `address` when it hangs on another bus itself,
/// `serial-nr`, and `devices` with its children when it has some.
class DeviceTessaraBus : public DeviceTessara {
 public:
  DeviceTessaraBus() : DeviceTessaraBus(nullptr, 0) {}
  DeviceTessaraBus(DeviceTessaraBus* bus, std::uint8_t address);
  explicit DeviceTessaraBus(const YAML::Node& node, DeviceTessaraBus* bus = nullptr);
  ~DeviceTessaraBus() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  [[nodiscard]] bool get_scanning() const { return scan_address_ >= 0; }
  /// Begins a scan at the first address, or ends the one that is running.
  void set_scanning(bool on);
  /// How much of a scan is done, 0 to 1; 0 without one.
  [[nodiscard]] double get_scan_progress() const;

  /// False when a device has that address already. From now on one has.
  bool mark_used(std::uint8_t address);
  void clear_used(std::uint8_t address) { used_.reset(address); }

  // The rest is for fibers. All throw TessaraCmdFailed, and DeviceInactiveException while they wait
  // for their turn.

  /// Whether something answers at the address within a tenth of a second; does not throw
  /// TessaraCmdFailed.
  bool ping(std::uint8_t address);
  /// At which speed the master talks to the address, by index.
  std::uint8_t get_speed(std::uint8_t address);
  void set_speed(std::uint8_t address, std::uint8_t index);
  using DeviceTessara::set_speed;
  /// A message to the device at the address, and its answer.
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
  void bring_back(DeviceTessara& device);

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
  std::bitset<256> joining_;  // found there, and being asked what it is
  int scan_address_ = -1;     // -1 without a scan
  // Each scan and each monitor has its own.
  Cancel scan_cancel_;
  Cancel monitor_cancel_;
};

}  // namespace zemblar

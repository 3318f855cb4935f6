#pragma once

#include <giomm/cancellable.h>

#include <cstdint>

#include "devices/railcom/detector.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// One input of a DeviceDummyRailComReader. Active from its beginning.
///
/// A Block takes the free state from `signal_changed` alone: on the way to free nobody is told that
/// a locomotive has left, but on the way to occupied it is told so of the one reported before.
class DeviceDummyRailComReaderInput : public Detector {
 public:
  DeviceDummyRailComReaderInput();

  [[nodiscard]] bool occupied() const override { return occupied_; }
  [[nodiscard]] unsigned orientation() const override { return occupied_ ? orientation_ : 0; }
  [[nodiscard]] std::vector<Lok*> detected() const override;

  // Each tells what has changed, and may therefore end this input.

  void set_occupied(bool occupied);
  /// Whether the locomotive is reported.
  void set_railcom(bool railcom);
  /// What `orientation` gives when occupied.
  void set_orientation(unsigned orientation);
  /// Who is reported from now on; null for none. Tells nobody. A locomotive that ends is forgotten.
  void set_lok(Lok* lok);

 private:
  unsigned orientation_ = 0;
  bool occupied_ = false;
  bool railcom_ = false;
  Lok* lok_ = nullptr;
  ScopedConnection lok_deleted_;
};

/// Simulates a RailCom reader, so that block control can run without hardware.
///
///     auto* reader = new DeviceDummyRailComReader;
///     reader->set_pattern(0b11);
///     reader->set_railcom(0b10);
///     zone->set_input(reader->child_at(0));
///     ...
///     reader->destroy();
///
/// A pattern of eight positions says which of its eight inputs, its children, are occupied, and a
/// second one which of them report the locomotive. Both move on by one input each second, round
/// and round; a new pattern counts from the next second on. Within a second the inputs that become
/// occupied come before those that become free, as under a train that moves.
///
/// It runs on a fiber from its constructor until it ends.
///
/// It lives in memory alone and cannot be saved: it must not be added to anything in a layout.
/// Whoever made it ends it by `destroy`.
class DeviceDummyRailComReader : public Device {
 public:
  static constexpr unsigned input_count = 8;

  DeviceDummyRailComReader();

  /// Bit i: position i is occupied.
  [[nodiscard]] std::uint8_t get_pattern() const { return pattern_; }
  void set_pattern(std::uint8_t pattern);
  /// Bit i: position i reports the locomotive, if it is occupied.
  [[nodiscard]] std::uint8_t get_railcom() const { return railcom_; }
  void set_railcom(std::uint8_t railcom);
  /// Which device knows the locomotive's address; null stands for the layout's default device.
  [[nodiscard]] Device* get_dcc_device() const { return dcc_device_; }
  void set_dcc_device(Device* device);
  /// Of the locomotive.
  [[nodiscard]] Address get_address() const { return address_; }
  void set_address(Address address);

  Glib::PropertyProxy<std::uint8_t> property_pattern() { return {this, "pattern"}; }
  Glib::PropertyProxy<std::uint8_t> property_railcom() { return {this, "railcom"}; }
  Glib::PropertyProxy<Device*> property_dcc_device() { return {this, "dcc-device"}; }
  Glib::PropertyProxy<Address> property_address() { return {this, "address"}; }

 protected:
  void on_deleting() override;

 private:
  using Input = DeviceDummyRailComReaderInput;

  void simulate();
  bool pause();
  void occupy(Input& input, unsigned position);
  [[nodiscard]] Lok* find_reported() const;
  template <typename Step>
  bool for_each_input(unsigned phase, const Step& step);

  Glib::RefPtr<Gio::Cancellable> sleep_cancel_;  // of the present pause
  std::uint8_t pattern_ = 0;
  std::uint8_t railcom_ = 0;
  Device* dcc_device_ = nullptr;
  Address address_;
  ScopedConnection dcc_device_deleted_;
};

}  // namespace zemblar

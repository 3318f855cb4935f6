#pragma once

#include <memory>

#include "devices/device.h"
#include "devices/driven_decoder.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// One DCC mobile decoder of a locomotive: its address, its speed-step format, the device that
/// drives it, and the last state commanded to it.
///
/// It does not access hardware itself. A command records the new value, marks it out of date and
/// starts one device operation. The device calls `complete` with the values that it has delivered,
/// and the decoder continues until nothing is out of date: speed before direction before functions.
/// A value that has changed meanwhile differs from the delivered one and is sent again, so the
/// hardware always ends with the latest value. While the device is out of service the marks stay;
/// `resend` tries again.
///
/// Owned by its Lok through Glib::RefPtr. Device fibers may hold it longer, so the Lok calls
/// `retire` when it ends or removes the decoder.
///
/// In a layout file: an untagged mapping with the keys `type`, `device`, `address` and `speed`.
/// `speed` is null while commands are disabled. A null reads back as the defaults, so saving and
/// opening enables the commands again. The private form also keeps ratio and reversal, under
/// `disabled-speed`.
class Decoder : public DrivenDecoder {
 public:
  static Glib::RefPtr<Decoder> create();
  /// Reads an entry of `decoders`. Throws std::runtime_error("Invalid Decoder Type") and
  /// YAML::InvalidScalar.
  static Glib::RefPtr<Decoder> create(const YAML::Node& node);
  void save(YAML::Emitter& out) const;
  /// Sets all settings to those of the entry.
  void restore(const YAML::Node& node);

  /// 0 to 126 or DecoderUpdate::emergency_stop; anything else fails an assertion. The speed is
  /// multiplied by the ratio, truncated, and at most 126. Sent even if unchanged.
  void set_speed(unsigned speed);
  /// Inverted if `reverse` is set. Sent even if unchanged.
  void set_direction(Direction direction);
  /// Asserts "fn <= 28". Sent even if unchanged, and even if commands are disabled.
  void set_function(unsigned fn, bool on);

  void complete(const DecoderUpdate& delivered) override;
  /// Sends what is out of date.
  void resend();
  /// Marks those of the items that were ever commanded as out of date, because a station has come
  /// into service that has not received them. Sends nothing by itself.
  void mark_out_of_date(std::uint32_t items);
  /// Call when the locomotive has ended: the decoder sends nothing more and releases its device.
  void retire();
  [[nodiscard]] bool is_retired() const override { return retired_; }
  /// True if a speed was commanded since the address, the device or the enabling of commands last
  /// changed. What was commanded before does not concern the present address.
  [[nodiscard]] bool has_speed_here() const { return has_speed_here_; }

  /// Null stands for the layout's default device.
  [[nodiscard]] Device* get_device() const { return device_; }
  void set_device(Device* device);
  /// The same; an object that is no device counts as null.
  void set_device(zemblar::Object* object);
  /// The device that drives this decoder now.
  [[nodiscard]] Device& driving_device() const;
  /// Watches the end of the device, after it has been read from a file.
  void follow_device();

  void set_type(DecoderType type);
  void set_address(Address address);
  [[nodiscard]] double get_speed_ratio() const { return speed_ratio_; }
  /// Ignored unless finite and not negative.
  void set_speed_ratio(double ratio);
  /// The highest ratio that the form offers; a file may have a higher one.
  static constexpr double max_speed_ratio = 10;
  [[nodiscard]] bool get_commands_enabled() const { return commands_enabled_; }
  void set_commands_enabled(bool enabled);
  [[nodiscard]] bool get_reverse() const { return reverse_; }
  void set_reverse(bool reverse);

  /// One of the settings has changed: type, device, address, ratio, enabled or reverse. Not emitted
  /// for commands.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// One of these settings is about to change.
  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// The decoder's address, its device or its enabling is about to change, or it ends. A locomotive
  /// that it has set moving keeps moving.
  static sigc::signal<void, const Decoder&>& signal_out_of_reach();

 protected:
  Decoder();
  explicit Decoder(const YAML::Node& node);

 private:
  void command(std::uint32_t item);
  void leave_address();
  void save_speed(YAML::Emitter& out) const;
  void save_disabled_speed(YAML::Emitter& out) const;

  Device* device_ = nullptr;
  double speed_ratio_ = 1.0;
  bool commands_enabled_ = true;
  bool reverse_ = false;
  bool retired_ = false;
  bool has_speed_here_ = false;
  std::uint32_t commanded_ = 0;  // the items that were ever marked out of date
  unsigned round_ = 0;           // number of the latest call of `complete` that sends
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_changing_;
  ScopedConnection device_deleted_;
};

/// "DCC (14 Speed Steps)" and so on, translated.
[[nodiscard]] Glib::ustring display_name(DecoderType type);

}  // namespace zemblar

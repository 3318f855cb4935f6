#pragma once

#include <memory>

#include "devices/device.h"
#include "devices/driven_decoder.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// One DCC mobile decoder of a locomotive: its address, its speed-step format, the device that
/// drives it, and the last state that was asked of it.
///
/// It never talks to hardware. A change is recorded, marked out of date, and one device operation
/// is started; the device tells `complete` what it has delivered, and the decoder goes on until
/// nothing is out of date: speed before direction before functions. A value that changed meanwhile
/// differs from what was delivered and is sent again, so the hardware always catches up with the
/// latest wish. On a device that is not in service the marks stay, and `resend` tries again.
///
/// Owned by its Lok through Glib::RefPtr; device fibers may hold it longer, so the Lok retires it
/// at its end.
///
/// In a layout file: an untagged mapping with the keys `type`, `device`, `address` and `speed`.
/// `speed` is null while commands are disabled, and null reads back as the defaults, so that they
/// are enabled again after saving and opening. The private form keeps ratio and direction as well,
/// under `disabled-speed`.
class Decoder : public DrivenDecoder {
 public:
  static Glib::RefPtr<Decoder> create();
  /// Reads an entry of `decoders`. Throws std::runtime_error("Invalid Decoder Type") and
  /// YAML::InvalidScalar.
  static Glib::RefPtr<Decoder> create(const YAML::Node& node);
  void save(YAML::Emitter& out) const;
  /// Sets all that the entry says.
  void restore(const YAML::Node& node);

  /// 0 to 126 or DecoderUpdate::emergency_stop; anything else fails an assertion. The speed is
  /// multiplied by the ratio, truncated, and at most 126. Sent even if unchanged.
  void set_speed(unsigned speed);
  /// Inverted if `reverse` is set. Sent even if unchanged.
  void set_direction(Direction direction);
  /// Asserts "fn <= 28". Sent even if unchanged, and even if commands are disabled.
  void set_function(unsigned fn, bool on);

  void complete(const DecoderUpdate& delivered) override;
  /// Tries again to send what is out of date.
  void resend();
  /// Of these items, those that were ever commanded are out of date again: a station has joined
  /// that has not got them. Sends nothing by itself.
  void mark_out_of_date(std::uint32_t items);
  /// Its locomotive has gone: sends nothing more and follows no device.
  void retire();
  [[nodiscard]] bool is_retired() const override { return retired_; }
  /// Whether a speed was commanded since the decoder has been addressed as it is now. What it was
  /// told under another address is no matter of this one.
  [[nodiscard]] bool has_speed_here() const { return has_speed_here_; }

  /// Null stands for the layout's default device.
  [[nodiscard]] Device* get_device() const { return device_; }
  void set_device(Device* device);
  /// Null for an object that is no device.
  void set_device(zemblar::Object* object);
  /// The device that drives this decoder now.
  [[nodiscard]] Device& driving_device() const;
  /// Follows a device that has been read from a file.
  void follow_device();

  void set_type(DecoderType type);
  void set_address(Address address);
  [[nodiscard]] double get_speed_ratio() const { return speed_ratio_; }
  /// Finite and not negative; anything else is ignored.
  void set_speed_ratio(double ratio);
  /// The highest one that the form offers; a file may hold more.
  static constexpr double max_speed_ratio = 10;
  [[nodiscard]] bool get_commands_enabled() const { return commands_enabled_; }
  void set_commands_enabled(bool enabled);
  [[nodiscard]] bool get_reverse() const { return reverse_; }
  void set_reverse(bool reverse);

  /// Type, device, address, ratio, enabled or reverse has a new value; never for what is sent.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// The same is about to have one.
  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// A decoder is about to be addressed otherwise, by another device or not at all, or ends. What
  /// it has moved goes on moving.
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
  unsigned round_ = 0;           // of sending
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_changing_;
  ScopedConnection device_deleted_;
};

/// "DCC (14 Speed Steps)" and so on, translated.
[[nodiscard]] Glib::ustring display_name(DecoderType type);

}  // namespace zemblar

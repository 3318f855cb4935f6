#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "devices/device.h"
#include "runtime/timer.h"

namespace zemblar {

class DefaultDevice;

/// A device that drives locomotives and switches points on the whole railway.
///
/// A station marked for default use serves all decoders and points that have no device of their
/// own: while in service, it is a member of the layout's DefaultDevice.
///
/// Each conversation first sends all waiting stops: switching the track power off, and speed 0 for
/// each locomotive that is to stop. So a stop waits only for the conversation in progress, not for
/// others that wait. A wish to switch the track power off is kept across a loss of service, also
/// when it was made out of service, until it is carried out or somebody switches the power on. A
/// wish to switch it on is not kept.
class CommandStation : public Device {
 public:
  [[nodiscard]] bool get_use_as_default() const { return use_as_default_; }
  /// Takes effect at once.
  void set_use_as_default(bool on);
  /// A station is about to leave default use but stays in service.
  static sigc::signal<void, Device&>& signal_leaving_default();
  void restore(const EntryChange& change) override;

  /// 2 for "DCC/Power", 1 for "DCC" and other "DCC/..." features.
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  /// `default_property` is the name of the property for default use, a string literal.
  CommandStation(const Glib::ustring& name_format, const char* default_property);

  /// A driver calls `join_default` when its `start` has succeeded, and `leave_default` in its
  /// `stop`.
  void join_default();
  void leave_default();
  void on_deleting() override;

  void power_on() override;
  void power_off() override;
  void update_speed(DrivenDecoder* decoder) override;
  void update_direction(DrivenDecoder* decoder) override;
  void update_function(DrivenDecoder* decoder, unsigned fn) override;
  [[nodiscard]] std::optional<bool> coming_track_power() const override;
  void remember_power(bool on) override;
  void on_in_service() override;

  /// Waits for a BusyLock, sends all waiting stops, and runs `talk`. If `talk` throws, calls
  /// `on_failed_talk` and throws on.
  void converse(const std::function<void()>& talk);

  // Implemented by the driver; called inside `converse`.

  /// Sends the present value of one item, a bit of DecoderUpdate. Returns the delivered items,
  /// which may be more.
  virtual DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t item) = 0;
  /// Switches the track power, and reports the station's answer by `track_power_is_on` or
  /// `track_power_is_off`.
  virtual void switch_power(bool on) = 0;
  /// A conversation has ended with the exception being handled, which is thrown on.
  virtual void on_failed_talk() {}

  bool use_as_default_ = true;

 private:
  using Decoders = std::vector<Glib::RefPtr<DrivenDecoder>>;

  [[nodiscard]] DefaultDevice* default_device() const;
  void update(DrivenDecoder* decoder, std::uint32_t item);
  void talk_in_turn(const std::function<void()>& talk);
  void send_stops();
  void send_stop(const Glib::RefPtr<DrivenDecoder>& decoder);
  [[nodiscard]] bool power_off_is_due() const { return due_power_ == false; }
  void settle_power(unsigned wish);
  void send_power_off();
  void send_due_power_off();

  const char* default_property_;
  std::optional<bool> due_power_;  // the wished power, until confirmed
  bool power_is_unknown_ = false;  // a command to switch the power on was not answered
  unsigned power_wishes_ = 0;      // number of wishes; a newer wish replaces an older one
  Timeout power_retry_;
};

}  // namespace zemblar

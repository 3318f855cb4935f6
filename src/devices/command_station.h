#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "devices/device.h"
#include "runtime/timer.h"

namespace zemblar {

class DefaultDevice;

/// A device that drives locomotives and switches points over the whole railway.
///
/// Marked for default use, it serves all decoders and points for which no device is chosen: it is a
/// member of the layout's DefaultDevice as long as it is in service.
///
/// Whoever has its turn to talk first sends what stops trains: switching the track power off, and
/// the speed of each locomotive that is to stand. So a stop waits for the conversation that is
/// under way, and for none of those that wait behind it. Power that was to be off is switched off
/// after a loss of service too, and when that was wished out of service, unless somebody wished it
/// on again; power that was to be on then is not switched on later.
class CommandStation : public Device {
 public:
  [[nodiscard]] bool get_use_as_default() const { return use_as_default_; }
  /// Takes effect at once.
  void set_use_as_default(bool on);
  /// A station is about to leave default use, though it stays in service.
  static sigc::signal<void, Device&>& signal_leaving_default();
  void restore(const EntryChange& change) override;

  /// "DCC/Power" fully; "DCC" and all else of it partly.
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  /// `default_property` is the name of the property that makes it a default device; a string
  /// literal.
  CommandStation(const Glib::ustring& name_format, const char* default_property);

  /// A driver calls these when its `start` has succeeded, and in its `stop`.
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

  /// Runs `talk` when the device is free, inside a BusyLock, and stops before it. What `talk`
  /// throws goes through `on_failed_talk`.
  void converse(const std::function<void()>& talk);

  // What a driver says, inside `converse`.

  /// Sends one item, a bit of DecoderUpdate, as the decoder wants it now. Returns what has been
  /// delivered, which may be more.
  virtual DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t item) = 0;
  /// Switches the track power and notes what the station says.
  virtual void switch_power(bool on) = 0;
  /// A conversation ends with the exception that is being handled; it is thrown on.
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
  std::optional<bool> due_power_;  // wished, and not confirmed yet
  bool power_is_unknown_ = false;  // a command to switch it on had no answer
  unsigned power_wishes_ = 0;      // counts them: a newer one makes an older one void
  Timeout power_retry_;
};

}  // namespace zemblar

#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "core/address.h"
#include "core/object.h"
#include "core/status.h"
#include "devices/driven_decoder.h"
#include "devices/link_state.h"
#include "guard/stop_order.h"
#include "runtime/busy_lock.h"

namespace zemblar {

class Layout;
class Lok;

/// Returns the locomotive as the object that it is: its name, its end. The layer of the locomotives
/// defines the function; no layer below knows the class.
[[nodiscard]] Object& as_object(Lok& lok);

/// A piece of hardware, or a channel to it: a command station, a bus, a reader, or an input of a
/// reader.
///
/// Drivers override the operations from `start` to `set_aspect`; each of them runs on a fiber and
/// may suspend. The rest of the program calls the `run_` operations, which do nothing while the
/// device is not active and otherwise start the operation on a fiber of its own.
///
/// `active` means that the device is in service. It is set before `start` runs, so that a driver
/// can use its own operations there, but announced only after `start` has succeeded. Conversations
/// exclude each other by BusyLock; `start` runs inside one and must not take another. A driver
/// reports trouble by `set_active(false)` and arranges its own return in `stop`.
///
/// One decoder update is in flight at a time (see DecoderTask). Decoders that ask meanwhile join
/// the pending list, and get an empty answer when the update ends, so that their next request sends
/// the newest value. They are answered in the order of arrival, the one whose update has failed
/// last, so that a locomotive that the hardware does not answer for does not block others. After a
/// return to service they are answered in the order of `rank`, until the list is empty or an update
/// has failed.
class Device : public Object, public Busy {
 public:
  ~Device() override;

  [[nodiscard]] bool active() const override { return active_; }
  [[nodiscard]] bool get_active() const { return active_; }
  /// Starts activation or deactivation on a fiber. With false, while `start` is still running,
  /// throws DeviceInactiveException, which makes the `start` end.
  void set_active(bool on);
  /// Like `set_active(false)`, but does nothing while `start` is running.
  void go_out_of_service();

  [[nodiscard]] bool track_power() const { return track_power_; }
  /// Switches the track power, unless it has that state already. The property changes when the
  /// hardware has confirmed. While the device is not active, only calls `remember_power`.
  void set_track_power(bool on);
  /// For drivers: call when the hardware has confirmed or reported its track power. Notifies each
  /// time.
  void track_power_is_on();
  void track_power_is_off();

  /// The state of the link to the hardware, and since when. `active` alone does not tell whether
  /// the hardware answers.
  [[nodiscard]] const LinkState& link_state() const { return link_; }
  /// The phase or the sentence has changed.
  sigc::signal<void>& signal_link_changed() { return signal_link_changed_; }

  void run_power(bool on);
  void run_update_speed(DrivenDecoder* decoder);
  void run_update_direction(DrivenDecoder* decoder);
  void run_update_function(DrivenDecoder* decoder, unsigned fn);
  /// Calls the one of these three that sends the item, a bit of DecoderUpdate.
  void run_update(DrivenDecoder* decoder, std::uint32_t item);
  void run_set_point(unsigned address, unsigned output, bool on);
  void run_set_aspect(unsigned address, unsigned aspect);

  /// 0 no, 1 partly, 2 yes. Features are "DCC", "DCC/Power", "DCC/...", "Occupancy", "RailCom".
  [[nodiscard]] virtual int supports(std::string_view feature) const;
  /// True if the device supports the decoder's kind of address and number.
  [[nodiscard]] virtual bool has_address_for(const DrivenDecoder& /*decoder*/) const {
    return true;
  }
  /// True if the device can address the decoder now. Otherwise the decoder is neither updated nor
  /// answered, as if the device were out of service, and the driver tells the user why.
  [[nodiscard]] virtual bool can_address(const DrivenDecoder& /*decoder*/) { return true; }
  /// True if the device keeps this item of the decoder, a bit of DecoderUpdate, back for now: it is
  /// neither sent nor answered. Later the driver calls the decoder's `complete`, so that it asks
  /// again.
  [[nodiscard]] virtual bool withholds(DrivenDecoder& /*decoder*/, std::uint32_t /*item*/) {
    return false;
  }
  /// The rank of the decoder's next command among those sent after a return to service; the lowest
  /// is sent first.
  [[nodiscard]] virtual unsigned rank(const DrivenDecoder& decoder) const;
  /// The order with which the guard can switch the track power off; no value for a device that
  /// cannot switch it, or that cannot be reached.
  [[nodiscard]] virtual std::optional<StopOrder> stop_order() const { return std::nullopt; }
  [[nodiscard]] virtual bool occupied() const { return false; }
  /// The side of the track from which RailCom answers come: 1 or 2; 0 if unknown.
  [[nodiscard]] virtual unsigned orientation() const { return 0; }
  /// The locomotives that this input detects now.
  [[nodiscard]] virtual std::vector<Lok*> detected() const { return {}; }

  /// Registers the locomotive that has an address on this device. False if another one has it
  /// already.
  bool add_lok(Address address, Lok* lok);
  /// Removes the entry if the address belongs to this locomotive.
  void remove_lok(Address address, Lok* lok);
  [[nodiscard]] Lok* find_lok(Address address) const;

  /// For drivers: adds the decoder to the pending list, whose members all get an answer. True if no
  /// update was in flight.
  bool join_pending(DrivenDecoder* decoder);
  /// For drivers: ends the update in flight. Gives the other decoders in the pending list an empty
  /// answer, then `decoder` its own.
  void finish_update(DrivenDecoder* decoder, const DecoderUpdate& delivered);

  Glib::PropertyProxy<bool> property_active() { return {this, "active"}; }
  Glib::PropertyProxy<bool> property_track_power() { return {this, "track-power"}; }

  /// Inputs only: the occupancy may have changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// Inputs only: the raw state has changed.
  sigc::signal<void>& signal_state_changed() { return signal_state_changed_; }
  /// Inputs only: a locomotive is detected, or no longer detected.
  sigc::signal<void, Lok*>& signal_arrived() { return signal_arrived_; }
  sigc::signal<void, Lok*>& signal_left() { return signal_left_; }

  /// A device has come into service; decoders that are out of date try again.
  static sigc::signal<void, Device&>& signal_in_service();

 protected:
  explicit Device(const Glib::ustring& name_format);

  /// Takes the device out of service at once and permanently. A driver that overrides this calls it
  /// and then ends its own waits, so that no fiber uses the device afterwards.
  void on_deleting() override;

  /// The layout that contains the device, else the current one, else null.
  [[nodiscard]] const Layout* layout() const;

  /// For drivers: sets the state of the link. Unless the device is looking for hardware, the
  /// sentence `why` is shown in the status line, until the phase or the sentence changes. A loss of
  /// service, or a missing answer, replaces the present text there; other trouble waits until the
  /// line is free. A driver need not report that it has come into service, and reports a loss only
  /// to say why: Device itself notes a successful start and the end of service.
  void set_link(LinkPhase phase, const Glib::ustring& why = {},
                Clock::time_point since = Clock::now());
  /// For drivers: call when service has ended or cannot begin. The phase becomes `lost` if the
  /// device has ever been in service, else `connecting`.
  void set_link_down(const Glib::ustring& why);
  /// True while `start` is running.
  [[nodiscard]] bool activating() const { return activating_; }

  /// For a device that needs no `start`: puts it into service without notification.
  void enter_service();

  /// The pending decoder with a stop that has the lowest rank, except those in `tried`; null if
  /// there is none.
  [[nodiscard]] Glib::RefPtr<DrivenDecoder> waiting_stop(
      const std::vector<Glib::RefPtr<DrivenDecoder>>& tried) const;
  /// Answers a pending decoder before the update in flight ends.
  void answer_early(const Glib::RefPtr<DrivenDecoder>& decoder, const DecoderUpdate& delivered);

  /// The state of the track power when all commands have been carried out; no value if unknown.
  [[nodiscard]] virtual std::optional<bool> coming_track_power() const { return track_power_; }
  /// Called when the track power was to be switched while the device is out of service.
  virtual void remember_power(bool /*on*/) {}
  /// Called after a successful `start`, before the notifications.
  virtual void on_in_service() {}
  /// Brings the hardware into service, inside a BusyLock. True when it is ready.
  virtual bool start() { return true; }
  /// Ends the service; called after `active` has become false.
  virtual void stop() {}
  virtual void power_on() {}
  virtual void power_off() {}
  virtual void update_speed(DrivenDecoder* /*decoder*/) {}
  virtual void update_direction(DrivenDecoder* /*decoder*/) {}
  virtual void update_function(DrivenDecoder* /*decoder*/, unsigned /*fn*/) {}
  virtual void set_point(unsigned /*address*/, unsigned /*output*/, bool /*on*/) {}
  virtual void set_aspect(unsigned /*address*/, unsigned /*aspect*/) {}

 private:
  /// A decoder that waits, or whose update is in flight.
  struct Waiting {
    Glib::RefPtr<DrivenDecoder> decoder;
    std::uint64_t ticket;  // distinguishes a request from a later one of the same decoder
  };
  using Pending = std::vector<Waiting>;
  /// Generation of the pending list; a stale DecoderTask must not answer again.
  using Round = std::uint64_t;
  friend class DecoderTask;

  void activate();
  bool run_start();
  bool try_start();
  void deactivate();
  void leave_service_for_good();
  void report_link();
  template <typename Operation>
  void begin_update(DrivenDecoder* decoder, std::uint32_t item, Operation operation);
  [[nodiscard]] bool is_waiting(std::uint64_t ticket) const;
  Pending take_pending();
  /// Gives all pending decoders an empty answer, unless that round has been answered already.
  void release(Round round);
  /// The same, but answers the decoder whose update has failed last.
  void release_after_failure(Round round, std::uint64_t failed);

  Pending pending_;  // in the order of arrival, so that none starves
  Round round_ = 0;
  std::uint64_t last_ticket_ = 0;
  bool catching_up_ = false;  // since the return to service the pending list has not been empty
  std::map<Address, Lok*> loks_;
  bool track_power_ = false;
  bool activating_ = false;
  bool active_ = false;
  bool was_in_service_ = false;
  LinkState link_;
  StatusNote link_note_;
  sigc::signal<void> signal_link_changed_;
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_state_changed_;
  sigc::signal<void, Lok*> signal_arrived_;
  sigc::signal<void, Lok*> signal_left_;
};

/// One decoder update in a driver.
///
///     DecoderTask task(this, decoder);
///     if (!task.leads()) return;      // the one in flight reads the newest value
///     ...                             // the conversation
///     task.finish({.mask = DecoderUpdate::speed_bit, .speed = speed});
///
/// If the scope ends without `finish`, also by an exception, all pending decoders get one empty
/// answer. The device may be destroyed meanwhile.
class DecoderTask {
 public:
  DecoderTask(Device* device, DrivenDecoder* decoder);
  ~DecoderTask();
  DecoderTask(const DecoderTask&) = delete;
  DecoderTask& operator=(const DecoderTask&) = delete;

  [[nodiscard]] bool leads() const { return leads_; }
  /// True if an earlier conversation has answered the decoder.
  [[nodiscard]] bool is_answered() const;
  void finish(const DecoderUpdate& delivered);

 private:
  Device* device_;
  Glib::RefPtr<DrivenDecoder> decoder_;
  std::shared_ptr<const bool> alive_;
  bool leads_;
  Device::Round round_;
  std::uint64_t ticket_;
};

}  // namespace zemblar

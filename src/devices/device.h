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

/// A piece of hardware, or a channel to it: a command station, a bus, a reader, one of its inputs.
///
/// Drivers override the operations from `start` to `set_aspect`; each of them runs on a fiber and
/// may suspend. The rest of the program calls the `run_` operations, which do nothing while the
/// device is not active and otherwise start the operation on a fiber of its own.
///
/// `active` means that the device can be talked to. It is set before `start` runs, so that a driver
/// can use its own operations there, but announced only when `start` has succeeded. Conversations
/// are kept apart by BusyLock; `start` runs under one already and takes none. A driver reports
/// trouble by `set_active(false)` and arranges its own return in `stop`.
///
/// One decoder update is in flight at a time (see DecoderTask): requests that arrive meanwhile join
/// `pending` and are told when it ends, so that the next one sends the newest value. Those who wait
/// are told in the order of their arrival, the one whose update has failed after all others: a
/// locomotive that the hardware does not answer for stands in nobody's way. After a return to
/// service the order is that of `rank` until nobody waits any more, or an update has failed.
class Device : public Object, public Busy {
 public:
  ~Device() override;

  [[nodiscard]] bool active() const override { return active_; }
  [[nodiscard]] bool get_active() const { return active_; }
  /// Starts activation or deactivation on a fiber. Throws DeviceInactiveException when a `start`
  /// that is still running is told to give up: it falls out of `start` this way.
  void set_active(bool on);
  /// `set_active(false)`, but a `start` that is still running goes on.
  void go_out_of_service();

  [[nodiscard]] bool track_power() const { return track_power_; }
  /// Does nothing when the power is as wanted; otherwise asks the hardware. The property changes
  /// when the hardware has confirmed. An inactive device does nothing, unless its driver remembers
  /// the wish.
  void set_track_power(bool on);
  /// For drivers: the hardware has confirmed or reported its power. Announced each time.
  void track_power_is_on();
  void track_power_is_off();

  /// How the link to the hardware is, and since when. `active` alone does not tell whether anybody
  /// answers.
  [[nodiscard]] const LinkState& link_state() const { return link_; }
  /// The phase or the sentence has changed.
  sigc::signal<void>& signal_link_changed() { return signal_link_changed_; }

  void run_power(bool on);
  void run_update_speed(DrivenDecoder* decoder);
  void run_update_direction(DrivenDecoder* decoder);
  void run_update_function(DrivenDecoder* decoder, unsigned fn);
  /// The one of these that sends the item, a bit of DecoderUpdate.
  void run_update(DrivenDecoder* decoder, std::uint32_t item);
  void run_set_point(unsigned address, unsigned output, bool on);
  void run_set_aspect(unsigned address, unsigned aspect);

  /// 0 no, 1 partly, 2 yes. Features are "DCC", "DCC/Power", "DCC/...", "Occupancy", "RailCom".
  [[nodiscard]] virtual int supports(std::string_view feature) const;
  /// Whether it has an address of the decoder's kind and number.
  [[nodiscard]] virtual bool has_address_for(const DrivenDecoder& /*decoder*/) const {
    return true;
  }
  /// Whether it can address that decoder. One that it cannot is not updated and not answered, as
  /// if the device were out of service; the driver tells the person why.
  [[nodiscard]] virtual bool can_address(const DrivenDecoder& /*decoder*/) { return true; }
  /// Whether the device keeps that item of the decoder, a bit of DecoderUpdate, back for now: it is
  /// neither sent nor answered. The driver asks the decoder again by `complete` when the time has
  /// come.
  [[nodiscard]] virtual bool withholds(DrivenDecoder& /*decoder*/, std::uint32_t /*item*/) {
    return false;
  }
  /// Where the decoder's next wish stands among those of others that go out after a return to
  /// service; the least comes first.
  [[nodiscard]] virtual unsigned rank(const DrivenDecoder& decoder) const;
  /// How the track power is switched off from outside the program; none for a device that has no
  /// power to switch, or while it cannot be reached.
  [[nodiscard]] virtual std::optional<StopOrder> stop_order() const { return std::nullopt; }
  [[nodiscard]] virtual bool occupied() const { return false; }
  /// The side from which RailCom comes: 0 unknown, 1 or 2.
  [[nodiscard]] virtual unsigned orientation() const { return 0; }
  /// The locomotives that are now detected on this input.
  [[nodiscard]] virtual std::vector<Lok*> detected() const { return {}; }

  /// Which locomotive owns an address on this device; the first one keeps it.
  bool add_lok(Address address, Lok* lok);
  /// Only when the address still is that locomotive's.
  void remove_lok(Address address, Lok* lok);
  [[nodiscard]] Lok* find_lok(Address address) const;

  /// For drivers: true when no update was in flight. In either case the decoder will be told.
  bool join_pending(DrivenDecoder* decoder);
  /// For drivers: ends the update in flight. Tells those who joined it that they got nothing, then
  /// `decoder` what it got.
  void finish_update(DrivenDecoder* decoder, const DecoderUpdate& delivered);

  Glib::PropertyProxy<bool> property_active() { return {this, "active"}; }
  Glib::PropertyProxy<bool> property_track_power() { return {this, "track-power"}; }

  /// Inputs only: occupancy may have changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// Inputs only: the raw state changed.
  sigc::signal<void>& signal_state_changed() { return signal_state_changed_; }
  /// Inputs only: a locomotive was detected, or is no longer.
  sigc::signal<void, Lok*>& signal_arrived() { return signal_arrived_; }
  sigc::signal<void, Lok*>& signal_left() { return signal_left_; }

  /// Some device has come into service: decoders that are out of date try again.
  static sigc::signal<void, Device&>& signal_in_service();

 protected:
  explicit Device(const Glib::ustring& name_format);

  /// Out of service at once and for good; a driver that overrides this calls it and then cuts off
  /// its own waits, so that no fiber is left that counts on the device.
  void on_deleting() override;

  /// The layout that it stands in, else the current one, else null.
  [[nodiscard]] const Layout* layout() const;

  /// For drivers: what the driver has just learned of its link. A sentence goes to the status line
  /// as well, unless the device looks for hardware; there it is withdrawn when the phase or the
  /// sentence changes. A loss of service replaces what stands there, other trouble waits for its
  /// turn. Drivers need not tell that they have come into service, and tell of a loss only to say
  /// why: a start that has succeeded and the end of service are noted by themselves.
  void set_link(LinkPhase phase, const Glib::ustring& why = {},
                Clock::time_point since = Clock::now());
  /// For drivers: service has ended or does not begin. Lost if it ever was in service, else
  /// still connecting.
  void set_link_down(const Glib::ustring& why);
  /// Whether `start` is running.
  [[nodiscard]] bool activating() const { return activating_; }

  /// For a device that needs no `start`: in service from now on, and nobody is told.
  void enter_service();

  /// The locomotive of least rank that is to stand and waits for its turn; null for none. Leaves
  /// out those in `tried`.
  [[nodiscard]] Glib::RefPtr<DrivenDecoder> waiting_stop(
      const std::vector<Glib::RefPtr<DrivenDecoder>>& tried) const;
  /// Answers one that waits, before the update in flight ends.
  void answer_early(const Glib::RefPtr<DrivenDecoder>& decoder, const DecoderUpdate& delivered);

  /// The power that it will have when all that was asked for is done; none if that is not known.
  [[nodiscard]] virtual std::optional<bool> coming_track_power() const { return track_power_; }
  /// Power was wished while out of service.
  virtual void remember_power(bool /*on*/) {}
  /// Comes after a `start` that has succeeded, before everybody is told.
  virtual void on_in_service() {}
  /// Brings the hardware into service, inside a BusyLock; true when it is ready.
  virtual bool start() { return true; }
  /// Leaves service; called after `active` went false.
  virtual void stop() {}
  virtual void power_on() {}
  virtual void power_off() {}
  virtual void update_speed(DrivenDecoder* /*decoder*/) {}
  virtual void update_direction(DrivenDecoder* /*decoder*/) {}
  virtual void update_function(DrivenDecoder* /*decoder*/, unsigned /*fn*/) {}
  virtual void set_point(unsigned /*address*/, unsigned /*output*/, bool /*on*/) {}
  virtual void set_aspect(unsigned /*address*/, unsigned /*aspect*/) {}

 private:
  /// One that waits, or whose update is in flight.
  struct Waiting {
    Glib::RefPtr<DrivenDecoder> decoder;
    std::uint64_t ticket;  // tells a request from a later one of the same decoder
  };
  using Pending = std::vector<Waiting>;
  /// Grows each time that those who wait are answered, so that nobody answers twice.
  using Round = std::uint64_t;
  friend class DecoderTask;

  void activate();
  bool run_start();
  bool try_start();
  void deactivate();
  void leave_service_for_good();
  void tell_link();
  template <typename Operation>
  void begin_update(DrivenDecoder* decoder, std::uint32_t item, Operation operation);
  [[nodiscard]] bool is_waiting(std::uint64_t ticket) const;
  Pending take_pending();
  /// Tells those who wait that they got nothing, unless that round has been answered already.
  void release(Round round);
  /// The same, the one whose update has failed after all others.
  void release_after_failure(Round round, std::uint64_t failed);

  Pending pending_;  // in order of arrival, so that none starves
  Round round_ = 0;
  std::uint64_t last_ticket_ = 0;
  bool catching_up_ = false;  // since the return to service somebody has been waiting
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
/// However the scope is left without `finish`, by an exception too, everyone who waits is told
/// once that nothing was delivered. A device that was destroyed meanwhile is left alone.
class DecoderTask {
 public:
  DecoderTask(Device* device, DrivenDecoder* decoder);
  ~DecoderTask();
  DecoderTask(const DecoderTask&) = delete;
  DecoderTask& operator=(const DecoderTask&) = delete;

  [[nodiscard]] bool leads() const { return leads_; }
  /// The decoder has had its answer from somebody whose turn came earlier.
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

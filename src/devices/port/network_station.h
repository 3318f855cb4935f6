#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "devices/command_station.h"
#include "devices/port/socket.h"
#include "devices/refused_items.h"
#include "runtime/timer.h"

namespace zemblar {

/// A command station that is reached over TCP. A driver adds the protocol.
///
/// The station connects by itself and tries again for as long as it lives, a second after each
/// attempt that failed; an attempt without an answer is given up after two seconds. Every failure,
/// a refused command included, takes the station out of service and back to connecting. A refused
/// item is kept back for growing times (see RefusedItems), so that all other items are sent. In
/// service the station is a member of the default device if `use_as_default`.
///
/// One exchange at a time. An answer is waited for without a limit. After three seconds the link
/// state says so, and the user can call `reconnect`.
///
/// In a layout file: the keys `name`, `id`, `host`, `use-as-default`, all required.
///
/// A driver's constructors end with `start_connecting`, and its destructor calls `on_deleting`.
class NetworkStation : public CommandStation {
 public:
  /// The station refused a command, or its answer is of no use.
  class CmdFailed : public std::exception {
   public:
    const char* what() const noexcept override { return "Command Failed"; }
  };

  void restore(const EntryChange& change) override;

  /// Name or address of the station, with ":port" if the port is not the usual one.
  [[nodiscard]] const Glib::ustring& get_host() const { return host_; }
  /// The host of the next attempt: an established connection stays until it fails. A connection
  /// that is not in service yet is given up, and the new host is tried at once.
  void set_host(const Glib::ustring& host);
  /// The host of the station in service; empty when there is none.
  [[nodiscard]] Glib::ustring connected_host() const {
    return active() ? known_host_ : Glib::ustring();
  }
  /// Cuts the connection, also during an exchange, and connects anew at once.
  void reconnect();

  /// Of the station that was in service last, also while the link is lost: trains drive on then.
  [[nodiscard]] std::optional<StopOrder> stop_order() const override { return stop_order_; }
  [[nodiscard]] bool withholds(DrivenDecoder& decoder, std::uint32_t item) override;
  [[nodiscard]] unsigned rank(const DrivenDecoder& decoder) const override;

  Glib::PropertyProxy<Glib::ustring> property_host() { return {this, "host"}; }
  Glib::PropertyProxy<bool> property_use_as_default() { return {this, "use-as-default"}; }

 protected:
  /// A command that waits for its answer; lives on the stack of the fiber that sent it. A driver
  /// derives a struct that holds the answer.
  struct Exchange {
    const std::string& command;  // shown to the user when there is no answer
    Clock::time_point sent{};
    fiber* waiter = nullptr;  // set while the fiber is suspended for the answer
    bool answered = false;
    bool cut = false;  // there will be no answer
  };

  /// Cuts the stream of one connection into messages. May outlive the station.
  class Reader {
   public:
    virtual ~Reader() = default;
    /// Where the next bytes go, and how many fit. Without room the connection ends.
    [[nodiscard]] virtual char* tail() = 0;
    [[nodiscard]] virtual std::size_t room() const = 0;
    /// The longest message, in bytes.
    [[nodiscard]] virtual std::size_t capacity() const = 0;
    /// `count` bytes have been put at `tail`.
    virtual void add(std::size_t count) = 0;
    /// Hands the next whole message to the station, and may end it; false when more bytes are
    /// needed.
    virtual bool pass_message() = 0;
  };

  NetworkStation(const Glib::ustring& name_format, std::uint16_t default_port,
                 const Glib::RefPtr<Socket>& socket);
  // The keys of a layout file.
  void load(const YAML::Node& node);
  void save_keys(YAML::Emitter& out) const;
  void start_connecting();

  bool start() override;
  void stop() override;
  void on_deleting() override;
  DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t item) override;
  void switch_power(bool on) override;
  void set_point(unsigned address, unsigned output, bool on) override;
  void on_failed_talk() override;

  // The protocol. All functions from `log_on` to `send_output` run on a fiber inside a BusyLock,
  // and throw CmdFailed for a refusal, except `send_power`.

  [[nodiscard]] virtual std::unique_ptr<Reader> make_reader() = 0;
  /// The reason of the last CmdFailed in the station's words.
  [[nodiscard]] virtual Glib::ustring refusal_words() const = 0;
  /// The order that switches the track power off. The caller adds host and port.
  [[nodiscard]] virtual StopOrder make_stop_order() const = 0;
  /// Forgets what the driver knows of the station: the host is another one.
  virtual void forget_station() = 0;
  /// Asks for the station's events and for its track power.
  virtual void log_on() = 0;
  virtual void send_item(Address address, const DecoderUpdate& wanted) = 0;
  /// False for a refusal, without an exception.
  virtual bool send_power(bool on) = 0;
  virtual void send_output(unsigned address, unsigned output, bool on) = 0;
  /// Call after an item for that address was refused. Forgets what the driver knows of the address;
  /// true if outdated knowledge may be the cause, so that the item is not kept back.
  virtual bool forget_after_refusal(Address /*address*/) { return false; }

  /// Sends the bytes, and suspends until `answered`. Only inside a BusyLock. Throws
  /// DeviceInactiveException when there will be no answer.
  void run(Exchange& exchange, const std::string& bytes);
  /// The exchange that waits for its answer, or null.
  [[nodiscard]] Exchange* waiting_exchange() const;
  /// Call when `waiting_exchange` has its answer.
  void answered();

 private:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;

  // Connecting.
  void keep_connecting(const Cancel& cancel);
  bool wait_for_attempt(const Cancel& cancel);
  bool try_connect(const Glib::RefPtr<Gio::SocketConnectable>& address, const Cancel& cancel);
  Glib::RefPtr<Gio::SocketConnectable> parse_host();
  void note_stop_order();
  void limit_attempt();
  void tell_unreachable();
  [[nodiscard]] bool may_connect() const;
  void close_socket();
  void open();
  void cut_start();
  void end_failed_start();
  void give_up(const Glib::ustring& why);
  [[nodiscard]] Glib::ustring unusable_words() const;

  // Talking.
  void keep_reading(const Cancel& cancel);
  bool read_some(Reader& reader, const Cancel& cancel);
  void end_reading(const Reader& reader);
  void wake_exchange();
  void cut_exchange();
  void send(const std::string& bytes);
  void watch_for_silence();
  void look_for_silence();
  void note_answer();
  void note_refusal(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
                    const char* text);
  [[nodiscard]] Glib::ustring locomotive_name(Address address) const;

  std::uint16_t default_port_;
  Glib::ustring host_ = "localhost";
  Glib::ustring known_host_;  // the host that the driver's knowledge belongs to
  Exchange* exchange_ = nullptr;
  Clock::time_point next_attempt_{};  // no attempt to connect before it
  bool begins_anew_ = false;          // `start` is to fail, and the next attempt follows at once
  std::optional<StopOrder> stop_order_;
  RefusedItems refused_;
  Glib::ustring failure_;       // why the conversation in progress has failed; empty if unknown
  bool failure_stays_ = false;  // the command is not repeated: `failure_` is shown after the return
  bool is_silent_ = false;      // the system has given the far end up
  bool was_cut_ = false;        // by `reconnect`, while an answer was waited for
  Timeout silence_;
  Timeout attempt_limit_;
  Glib::RefPtr<Socket> socket_;
  // Each fiber holds a copy: the members are replaced.
  Cancel connect_cancel_ = Gio::Cancellable::create();
  Cancel read_cancel_ = Gio::Cancellable::create();
  Cancel write_cancel_ = Gio::Cancellable::create();
};

}  // namespace zemblar

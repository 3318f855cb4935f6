#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "devices/command_station.h"
#include "devices/ecos/ecos_msg.h"
#include "devices/port/socket.h"
#include "devices/refused_items.h"
#include "runtime/timer.h"

namespace zemblar {

/// An ESU ECoS command station, reached over TCP through its text protocol.
///
/// It connects by itself and tries again for as long as it lives, a second after each attempt that
/// failed; an attempt that nobody answers is given up after two seconds. Every failure, a refused
/// command included, takes it out of service and back to connecting. What was refused is kept back
/// for growing times (see RefusedItems), so that everybody else is heard. In service it follows the
/// station's track power and is a member of the default device if `use_as_default`.
///
/// Answers are waited for without a limit. After three seconds the link state says so, and
/// `reconnect` is there for who will not wait any longer.
///
/// Locomotives are found by their address among the station's objects, and made there when it has
/// none. Control of one is taken before each single command and given back after it, so that a hand
/// throttle at the station stays usable.
///
/// A message longer than ECoSFraming::capacity, such as the list of very many locomotives, ends the
/// connection; the status line says so.
///
/// In a layout file: the keys `name`, `id`, `host`, `use-as-default`, all required. Its tag is one
/// that the emitter refuses, so that the file ends there.
class ECoS : public CommandStation {
 public:
  static constexpr std::uint16_t default_port = 15471;

  /// The station refused a command, or its answer is of no use.
  class CmdFailed : public std::exception {
   public:
    const char* what() const noexcept override { return "Command Failed"; }
  };

  /// Begins to connect at once. The socket may be one in memory.
  explicit ECoS(const Glib::RefPtr<Socket>& socket = Socket::create());
  explicit ECoS(const YAML::Node& node, const Glib::RefPtr<Socket>& socket = Socket::create());
  ~ECoS() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// Name or address of the station, with ":port" if the port is not `default_port`.
  [[nodiscard]] const Glib::ustring& get_host() const { return host_; }
  /// For the next attempt: an established connection stays until it fails. A connection that is not
  /// in service yet is given up, and the new host is tried at once.
  void set_host(const Glib::ustring& host);
  /// The host of the station in service; empty when there is none.
  [[nodiscard]] Glib::ustring connected_host() const {
    return active() ? objects_host_ : Glib::ustring();
  }
  /// Cuts the connection, whatever it is doing, and begins anew at once.
  void reconnect();

  /// The station that was in service last, though the link to it may be lost: trains drive on then.
  [[nodiscard]] std::optional<StopOrder> stop_order() const override { return stop_order_; }
  [[nodiscard]] bool withholds(DrivenDecoder& decoder, std::uint32_t item) override;
  [[nodiscard]] unsigned rank(const DrivenDecoder& decoder) const override;

  Glib::PropertyProxy<Glib::ustring> property_host() { return {this, "host"}; }
  Glib::PropertyProxy<bool> property_use_as_default() { return {this, "use-as-default"}; }

 protected:
  bool start() override;
  void stop() override;
  DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t item) override;
  void switch_power(bool on) override;
  void on_failed_talk() override;
  void set_point(unsigned address, unsigned output, bool on) override;
  void on_deleting() override;

 private:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  /// A command on its way and what has come of it; lives on the stack of the fiber that sent it.
  struct Exchange {
    const std::string& command;
    Clock::time_point sent;
    fiber* waiter = nullptr;  // set while the fiber is suspended for the answer
    std::optional<ECoSMsg> answer{};
    bool cut = false;  // there will be no answer
  };

  /// What the station has said to a command that it did not carry out.
  struct Refusal {
    unsigned status = 0;
    Glib::ustring text{};
  };

  void register_properties();

  // Connecting.
  void start_connecting();
  void keep_connecting(const Cancel& cancel);
  bool wait_for_attempt(const Cancel& cancel);
  bool try_connect(const Glib::RefPtr<Gio::SocketConnectable>& address, const Cancel& cancel);
  Glib::RefPtr<Gio::SocketConnectable> parse_host();
  void note_stop_order();
  void limit_attempt();
  void tell_unreachable();
  [[nodiscard]] bool may_connect() const;
  void close_socket();
  void subscribe();
  void cut_start();
  void end_failed_start();
  void give_up(const Glib::ustring& why);

  // Talking.
  void keep_reading(const Cancel& cancel);
  bool read_some(ECoSFraming& framing, const Cancel& cancel);
  void end_reading(bool had_room);
  void dispatch(const ECoSMsg& message);
  void follow_power(const ECoSMsg::Values& station);
  void wake_exchange();
  void cut_exchange();
  ECoSMsg command(const std::string& text);
  void send(const std::string& bytes);
  ECoSMsg expect_success(const std::string& text);
  void send_item(Address address, const DecoderUpdate& wanted);
  void note_refusal(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
                    const char* text);
  [[nodiscard]] Glib::ustring locomotive_name(Address address) const;
  void watch_for_silence();
  void look_for_silence();
  void note_answer();
  [[nodiscard]] Glib::ustring refusal_words() const;
  [[nodiscard]] Glib::ustring unusable_words() const;
  unsigned object_id(Address address);
  std::optional<unsigned> find_locomotive(Address address);
  unsigned create_locomotive(Address address);

  Exchange* exchange_ = nullptr;
  std::map<Address, unsigned> objects_;  // the station's ids; forgotten one by one when refused
  Glib::ustring objects_host_;           // whose ids these are
  Glib::ustring host_ = "localhost";
  Clock::time_point next_attempt_{};  // no attempt to connect before it
  bool begins_anew_ = false;  // the start under way is to fail, and the next one follows at once
  std::optional<StopOrder> stop_order_;
  RefusedItems refused_;
  Refusal refusal_;             // the last one
  Glib::ustring failure_;       // why the conversation in progress has failed, if that is known
  bool failure_stays_ = false;  // nobody tries that again, so it is told beyond the return
  bool is_silent_ = false;      // the system has given the far end up
  bool was_cut_ = false;        // by who would not wait for an answer any longer
  Timeout silence_;
  Timeout attempt_limit_;
  Glib::RefPtr<Socket> socket_;
  // Each fiber holds its own: these are replaced.
  Cancel connect_cancel_ = Gio::Cancellable::create();
  Cancel read_cancel_ = Gio::Cancellable::create();
  Cancel write_cancel_ = Gio::Cancellable::create();
};

}  // namespace zemblar

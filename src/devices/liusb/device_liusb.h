#pragma once

#include <map>
#include <optional>

#include "devices/command_station.h"
#include "devices/liusb/liusb_codec.h"
#include "devices/liusb/serial_port_liusb.h"
#include "runtime/timer.h"

namespace zemblar {

/// A Lenz LI-USB: the way to an XpressNet command station over a serial port.
///
/// It waits for its hardware: the first LI-USB without a port takes one that is offered. With a
/// port it comes into service by asking for the interface's version and the station's status; an
/// interface that does not answer is asked again a second later. Unplugged, it waits for the
/// next one.
///
/// One request and its answer at a time. Without an answer within 750 ms the operation fails, but
/// the device stays in service, and decoders try again; when nobody wishes anything, the station's
/// status is asked for once a second until there is an answer. Answers are not told apart, but for
/// those about points: the station's word that it is busy counts as delivered. What a station tells
/// everybody of its track power is followed, and confirms a switching that is not answered
/// otherwise. A port that fails is let go of.
///
/// Functions go out by the group. Decoders that share an address do not undo each other's: all but
/// what a decoder wants changed goes out as the address was last told.
///
/// The station has fewer addresses than decoders can have (see liusb::can_drive). Others are
/// refused with a word in the status line, and their decoders stay out of date.
///
/// In a layout file: the keys `name`, `id`, `use-as-default`.
class LIUSB : public CommandStation {
 public:
  LIUSB();
  explicit LIUSB(const YAML::Node& node);
  ~LIUSB() override;
  void save(YAML::Emitter& out) const override;

  /// Takes the port and begins to talk; false when it has one or is being destroyed.
  bool attach(SerialPort* port);

  [[nodiscard]] bool has_address_for(const DrivenDecoder& decoder) const override;
  [[nodiscard]] bool can_address(const DrivenDecoder& decoder) override;
  [[nodiscard]] std::optional<StopOrder> stop_order() const override;

  Glib::PropertyProxy<bool> property_enable_default() { return {this, "enable-default"}; }

 protected:
  bool start() override;
  void stop() override;
  DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t item) override;
  void switch_power(bool on) override;
  void set_point(unsigned address, unsigned output, bool on) override;
  void on_deleting() override;

 private:
  using Port = Glib::RefPtr<SerialPort>;

  /// The functions that an address was last told of: bit n is function n.
  struct KnownFunctions {
    std::uint32_t told = 0;
    std::uint32_t on = 0;

    /// `functions` where they are the sender's own or never told, the rest as told.
    [[nodiscard]] std::uint32_t merge(std::uint32_t functions, std::uint32_t own) const {
      const auto others = told & ~own;
      return (functions & ~others) | (on & others);
    }
    void tell(std::uint32_t functions, std::uint32_t which) {
      on = (on & ~which) | (functions & which);
      told |= which;
    }
  };

  void wait_for_hardware();
  void let_go_of_port();
  void lose_port();
  void try_again(const Port& tried);
  void open_port(const Port& port);
  void greet();
  void read_status();

  liusb::Bytes exchange(const liusb::Bytes& message, std::optional<bool> power = {});
  liusb::Bytes talk(const Port& port, const liusb::Bytes& message);
  void require_service(const Port& port) const;
  void note_answer();
  void note_silence();
  void ask_for_life();
  void follow_power(bool on);
  [[nodiscard]] Glib::ustring not_plugged_in() const;
  DecoderUpdate drive(const DrivenDecoder& decoder);
  DecoderUpdate set_functions(const DrivenDecoder& decoder, unsigned fn);
  void switch_coil(const liusb::Bytes& message);

  PortHold hold_;  // empty until hardware is attached
  std::map<Address, KnownFunctions> functions_;
  std::optional<bool> power_heard_;  // from a broadcast, in this exchange
  Timeout retry_;
  // Each exchange has its own: it ends the one in flight.
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  ScopedConnection attached_;
};

}  // namespace zemblar

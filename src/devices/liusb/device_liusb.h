#pragma once

#include <map>
#include <optional>

#include "devices/command_station.h"
#include "devices/liusb/liusb_codec.h"
#include "devices/liusb/serial_port_liusb.h"
#include "runtime/timer.h"

namespace zemblar {

/// A Lenz LI-USB: an interface to an XpressNet command station over a serial port.
///
/// It waits for its hardware: the first LI-USB without a port takes a port that is offered. It
/// comes into service by asking for the interface's version and the station's status; if there is
/// no answer, it tries again a second later. When unplugged, it waits for the next port.
///
/// There is one request with its answer at a time. Without an answer within 750 ms the operation
/// fails, but the device stays in service, and decoders try again; when there are no requests, it
/// asks for the station's status once a second until there is an answer. Any answer counts as
/// success, even "station busy", except for points. Broadcasts of the track power are followed, and
/// also confirm a request to switch it. A port that fails is released.
///
/// Functions are sent in groups. Functions that a decoder does not want to change are sent with the
/// value last sent to the address, so that decoders with the same address do not undo each other's
/// functions.
///
/// The station supports fewer addresses than decoders can have (see liusb::can_drive). Other
/// addresses are refused with a text in the status line, and their decoders stay out of date.
///
/// In a layout file: the keys `name`, `id`, `use-as-default`.
class LIUSB : public CommandStation {
 public:
  LIUSB();
  explicit LIUSB(const YAML::Node& node);
  ~LIUSB() override;
  void save(YAML::Emitter& out) const override;

  /// Takes the port and activates the device. False if it has a port already or is being destroyed.
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

  /// The functions last sent to an address: bit n is function n.
  struct KnownFunctions {
    std::uint32_t sent = 0;  ///< functions that were ever sent
    std::uint32_t on = 0;    ///< those of them that are on

    /// `functions` for the bits in `own` and those never sent, the last sent value for the rest.
    [[nodiscard]] std::uint32_t merge(std::uint32_t functions, std::uint32_t own) const {
      const auto others = sent & ~own;
      return (functions & ~others) | (on & others);
    }
    void record(std::uint32_t functions, std::uint32_t which) {
      on = (on & ~which) | (functions & which);
      sent |= which;
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
  std::optional<bool> power_heard_;  // track power from a broadcast during this exchange
  Timeout retry_;
  // Cancels the present exchange; each has its own.
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  ScopedConnection attached_;
};

}  // namespace zemblar

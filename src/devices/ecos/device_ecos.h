#pragma once

#include <map>
#include <optional>
#include <string>

#include "devices/ecos/ecos_msg.h"
#include "devices/port/network_station.h"

namespace zemblar {

/// An ESU ECoS command station, reached over TCP through its text protocol.
///
/// The driver follows the station's track power. It finds locomotives by their address among the
/// station's objects, and makes a missing one there. Control of a locomotive is taken before each
/// command and given back after it, so that a hand throttle at the station stays usable.
///
/// A message longer than ECoSFraming::capacity, such as the list of very many locomotives, ends the
/// connection; the status line says so.
///
/// Its tag in a layout file is one that the emitter refuses, so that the file ends there.
class ECoS : public NetworkStation {
 public:
  static constexpr std::uint16_t default_port = 15471;

  /// Begins to connect at once. The socket may be one in memory.
  explicit ECoS(const Glib::RefPtr<Socket>& socket = Socket::create());
  explicit ECoS(const YAML::Node& node, const Glib::RefPtr<Socket>& socket = Socket::create());
  ~ECoS() override;
  void save(YAML::Emitter& out) const override;

 protected:
  [[nodiscard]] std::unique_ptr<Reader> make_reader() override;
  [[nodiscard]] Glib::ustring refusal_words() const override;
  [[nodiscard]] StopOrder make_stop_order() const override;
  void forget_station() override { objects_.clear(); }
  void log_on() override;
  void send_item(Address address, const DecoderUpdate& wanted) override;
  bool send_power(bool on) override;
  void send_output(unsigned address, unsigned output, bool on) override;
  bool forget_after_refusal(Address address) override;

 private:
  struct Question;
  class MessageReader;

  /// The station's answer to a command that it did not carry out.
  struct Refusal {
    unsigned status = 0;
    Glib::ustring text{};
  };

  void dispatch(const ECoSMsg& message);
  void follow_power(const ECoSMsg::Values& station);
  ECoSMsg command(const std::string& text);
  ECoSMsg expect_success(const std::string& text);
  unsigned object_id(Address address);
  std::optional<unsigned> find_locomotive(Address address);
  unsigned create_locomotive(Address address);

  std::map<Address, unsigned> objects_;  // the station's ids; forgotten one by one when refused
  bool number_was_known_ = false;        // before the item was sent
  Refusal refusal_;                      // the last one
};

}  // namespace zemblar

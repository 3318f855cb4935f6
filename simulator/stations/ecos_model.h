#pragma once

#include <bitset>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/stations/ecos_protocol.h"

namespace zemblar::simulator {

/// Number of a connection, counted from 1.
using EcosClient = unsigned;

/// A locomotive object of the station.
struct EcosLocomotive {
  static constexpr unsigned function_count = 32;
  static constexpr unsigned max_address = 10239;

  unsigned id = 0;       ///< object id, 1000 and above
  unsigned address = 0;  ///< 1 to 10239; 0 is a locomotive without an address
  std::string name;
  std::string protocol = "DCC128";
  unsigned speed = 0;      ///< 0 to 127
  unsigned direction = 0;  ///< 0 forward, 1 backward
  std::bitset<function_count> functions;
  std::optional<EcosClient> holder;  ///< the client that has control
};

/// What the station sends to one connection: a whole reply or event.
struct EcosMessage {
  EcosClient to = 0;
  std::string text;
};

/// The station's state and behaviour: objects, and the clients that control and view them. Pure, no
/// input or output; the resulting messages are returned in the order of sending.
///
/// Objects: 1 the station, 10 the locomotive manager, 11 the switching manager, 1000 and above the
/// locomotives. Standard: options, control and view. Guessed: the order of reply and event, that
/// the sender of a command gets the event too when it views the object, that a command without
/// any effect makes no event, and that a command with one bad option has no effect at all.
class EcosModel {
 public:
  static constexpr unsigned station_object = 1;
  static constexpr unsigned locomotive_manager = 10;
  static constexpr unsigned switching_manager = 11;
  static constexpr unsigned first_locomotive = 1000;

  /// Carries out a command line and returns the reply, first, and the events.
  [[nodiscard]] std::vector<EcosMessage> execute(EcosClient client, std::string_view line);

  /// Releases everything that a disconnected client controls and views, without events.
  void leave(EcosClient client);

  /// The keys on the station's front. An emergency also sets all speeds to 0.
  [[nodiscard]] std::vector<EcosMessage> press_go() { return press(true, false); }
  [[nodiscard]] std::vector<EcosMessage> press_stop() { return press(false, false); }
  [[nodiscard]] std::vector<EcosMessage> press_emergency() { return press(false, true); }

  /// Adds a locomotive at the station's own panel, where several may have one address. Stores its
  /// object id in `id` and returns the events.
  [[nodiscard]] std::vector<EcosMessage> add_locomotive(unsigned address, std::string name,
                                                        unsigned* id = nullptr);

  [[nodiscard]] bool track_power() const { return power_; }
  /// The locomotives by object id.
  [[nodiscard]] const std::map<unsigned, EcosLocomotive>& locomotives() const {
    return locomotives_;
  }
  /// The locomotive with this address, the newest of several, or null.
  [[nodiscard]] const EcosLocomotive* locomotive(unsigned address) const;
  /// The last position, 'g' or 'r', of each output by protocol and number, as in "DCC17".
  [[nodiscard]] const std::map<std::string, char>& switches() const { return switches_; }

 private:
  struct Call {
    EcosClient client;
    const EcosCommand& command;
    std::vector<std::string> body{};
  };
  using Handler = void (EcosModel::*)(Call&);
  static Handler handler(std::string_view verb);

  void get(Call& call);
  void set(Call& call);
  void request(Call& call);
  void release(Call& call);
  void create(Call& call);
  void remove(Call& call);
  void query_objects(Call& call);

  void set_station(const Call& call);
  void set_switches(const Call& call);
  void set_locomotive(const Call& call);
  void take_control(EcosLocomotive& locomotive, EcosClient client, bool force);
  void set_power(bool on);
  void change(EcosLocomotive& locomotive, const EcosLocomotive& wanted);
  unsigned insert(EcosLocomotive locomotive);
  std::vector<EcosMessage> press(bool power, bool emergency);

  void must_exist(unsigned object) const;
  void must_allow_access(const EcosCommand& command) const;
  EcosLocomotive& locomotive_object(unsigned id);
  EcosLocomotive& controlled(const Call& call);
  void tell_viewers(unsigned object, const std::vector<std::string>& body);
  std::vector<EcosMessage> take_events() { return std::exchange(events_, {}); }

  bool power_ = false;
  std::map<unsigned, EcosLocomotive> locomotives_;
  std::map<std::string, char> switches_;
  unsigned next_id_ = first_locomotive;
  std::set<std::pair<unsigned, EcosClient>> views_;  // object and viewer
  std::vector<EcosMessage> events_;                  // of the command being carried out
};

}  // namespace zemblar::simulator

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zemblar::simulator {

/// A simulated XpressNet command station: requests in, answers out. Pure.
///
/// Standard (the XpressNet protocol that Lenz publishes). Messages are held with their header and
/// without their check byte.
class XpressNetStation {
 public:
  using Message = std::vector<std::uint8_t>;

  struct Locomotive {
    unsigned steps = 0;  ///< of the format it was last driven in: 14, 27, 28 or 128
    unsigned step = 0;   ///< 0 stands still; up to 14, 27, 28, 126
    bool forwards = false;
    bool emergency = false;
    std::map<unsigned, bool> functions{};  ///< functions that were ever set
  };

  /// The answer to a request, and a broadcast caused by it.
  struct Reaction {
    Message answer;
    std::optional<Message> broadcast{};
  };
  Reaction execute(const Message& request);

  /// The last commanded state; null if the locomotive was never commanded. Addresses from 100 on
  /// are long.
  [[nodiscard]] const Locomotive* locomotive(unsigned address) const;
  /// Output 1 to 8 of a decoder from 1 to 256: true while energised; no value if it never was.
  [[nodiscard]] std::optional<bool> coil(unsigned decoder, unsigned output) const;

  bool power = true;
  bool service_mode = false;
  bool automatic_start = false;  ///< locomotives run on with the speeds from before
  bool cold_start = false;       ///< it was just switched on

 private:
  Reaction execute_simple(const Message& request);
  Message status() const;
  bool drive(unsigned format, unsigned address, std::uint8_t data);
  bool set_functions(unsigned group, unsigned address, std::uint8_t data);
  bool operate(const Message& request);
  bool switch_coil(std::uint8_t decoder, std::uint8_t data);

  std::map<unsigned, Locomotive> locomotives_;
  std::map<std::pair<unsigned, unsigned>, bool> coils_;
};

/// "e4 13 00 03 c0"
[[nodiscard]] std::string hex(const XpressNetStation::Message& message);

}  // namespace zemblar::simulator

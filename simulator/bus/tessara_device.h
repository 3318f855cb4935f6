#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::simulator {

/// Hardware with an address on a Tessara bus, as seen by its master. It receives a message only if
/// the master uses the device's speed.
class TessaraDevice {
 public:
  virtual ~TessaraDevice() = default;

  /// The index of the bus speed at which it listens; 0 after power on.
  [[nodiscard]] virtual unsigned speed() const = 0;
  /// Carries out a message and returns the answer; no value if the device refuses. A change of
  /// speed takes effect with the next message.
  virtual std::optional<std::string> execute(std::string_view message) = 0;
  /// Switches the power off and on, which resets the state.
  virtual void restart() = 0;
};

/// Four bytes of kind and the table of speeds: what each information block begins with. Bit k of
/// the first word stands for speed k; bit 15 says that another word follows, whose bit k stands for
/// speed k + 1 in place of what the first one said of that, and so on.
[[nodiscard]] std::string tessara_info(std::string_view kind,
                                       const std::vector<std::uint16_t>& speeds);
/// True if the table contains the speed.
[[nodiscard]] bool has_speed(const std::vector<std::uint16_t>& speeds, unsigned index);

}  // namespace zemblar::simulator

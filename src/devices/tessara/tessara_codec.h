#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::tessara {

/// Messages on the Tessara bus and what the answers mean. Pure: no I/O, no clock.
///
/// A message is a command byte and its data; the line frames it, with neither mark nor check sum.
/// A bus master relays messages to the devices that hang on it, in pieces if they are long.

// --- What every device understands ---

[[nodiscard]] std::string ask_info();
[[nodiscard]] std::string ask_serial();
/// From now on that device talks at the speed of that index.
[[nodiscard]] std::string use_speed(std::uint8_t index);

// --- What a bus master understands ---

[[nodiscard]] std::string ask_speed_of(std::uint8_t address);
/// The master talks to that address at the speed of that index.
[[nodiscard]] std::string set_speed_of(std::uint8_t address, std::uint8_t index);
/// Fetches what the device has answered to the message that was relayed to it.
[[nodiscard]] std::string fetch();

/// A message on its way through the master to an address, cut into frames of 256 bytes at most.
///
///     while (!relay.done()) relay.accept(count in the answer to relay.frame());
class Relay {
 public:
  Relay(std::uint8_t address, std::string_view message);

  /// Everything has been accepted.
  [[nodiscard]] bool done() const { return rest_.empty(); }
  /// The next frame; only while not done.
  [[nodiscard]] std::string frame() const;
  /// How much of that frame the master took, the address included; 0 when it was not ready. False,
  /// and nothing changed, for more than was offered.
  [[nodiscard]] bool accept(std::size_t count);

 private:
  [[nodiscard]] std::size_t offered() const;

  std::string rest_;  // the address and the message, from the first byte not yet accepted
  bool begun_ = false;
};

/// The count in the answer to a relayed frame: two bytes, the higher first. None for anything else.
[[nodiscard]] std::optional<std::size_t> accepted_count(std::string_view reply);

/// What a fetch has brought. An answer without a status byte has failed.
struct Fetched {
  enum class Status { complete, more, failed };
  Status status;
  std::string_view data;
};
[[nodiscard]] Fetched read_fetched(std::string_view reply);

// --- Info blocks ---

/// The beginnings of info blocks: who is it?
inline constexpr std::string_view bus_model{"BUS\0", 4};
inline constexpr std::string_view reader_model{"QVRN", 4};

/// Which speeds a device knows, by index.
struct SpeedTable {
  std::vector<bool> speeds;
  std::size_t end;  ///< offset of the byte after it in the info block

  [[nodiscard]] bool has(std::size_t index) const { return index < speeds.size() && speeds[index]; }
};
/// The table in an info block. It is meant to fit one word of 15 entries; each word that follows
/// begins one entry later than the one before and replaces what that said. Throws
/// std::runtime_error "Broken Speed Table" when the block ends before the table does.
[[nodiscard]] SpeedTable read_speed_table(std::string_view info);

/// What a bus master says of itself.
struct BusInfo {
  SpeedTable table;
  bool speed_scan;         ///< a scan need not try one speed after the other
  std::uint8_t max_speed;  ///< the highest speed index
};
/// None when it is no master's block. Throws as `read_speed_table` does.
[[nodiscard]] std::optional<BusInfo> read_bus_info(std::string_view info);

/// What a RailCom reader says of itself.
struct ReaderInfo {
  SpeedTable table;
  std::uint8_t input_count;
  std::uint8_t encodings;  ///< of poll answers; bit n for encoding n
};
/// None when it is no reader's block, or one with more inputs than can be told apart (255). Throws
/// as `read_speed_table` does.
[[nodiscard]] std::optional<ReaderInfo> read_reader_info(std::string_view info);

// --- What a RailCom reader understands ---

[[nodiscard]] std::string use_encoding(std::uint8_t encoding);
/// Input i is bit i mod 8 of byte i / 8.
[[nodiscard]] std::string enable_inputs(const std::vector<bool>& inputs);
/// The poll answers begin anew: with the states of all inputs, and without a history of packets.
[[nodiscard]] std::string reset_stream();
/// Fetches what has happened since the last time.
[[nodiscard]] std::string poll();

}  // namespace zemblar::tessara

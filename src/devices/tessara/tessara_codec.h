#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::tessara {

/// Messages on the Tessara bus, and the interpretation of answers. Pure: no I/O, no clock.
///
/// A message is a command byte and its data, framed by modem lines, without delimiters or check
/// sum. A bus master relays messages to the devices on its bus, in pieces if they are long.

// --- What every device understands ---

[[nodiscard]] std::string ask_info();
[[nodiscard]] std::string ask_serial();
/// Makes the device use the speed with this index from now on.
[[nodiscard]] std::string use_speed(std::uint8_t index);

// --- What a bus master understands ---

[[nodiscard]] std::string ask_speed_of(std::uint8_t address);
/// Makes the master use the speed with this index for the address.
[[nodiscard]] std::string set_speed_of(std::uint8_t address, std::uint8_t index);
/// Fetches the device's answer to the relayed message.
[[nodiscard]] std::string fetch();

/// A message on its way through the master to an address, cut into frames of 256 bytes at most.
///
///     while (!relay.done()) relay.accept(count in the answer to relay.frame());
class Relay {
 public:
  Relay(std::uint8_t address, std::string_view message);

  /// True if the whole message has been accepted.
  [[nodiscard]] bool done() const { return rest_.empty(); }
  /// The next frame; call only while not done.
  [[nodiscard]] std::string frame() const;
  /// Records how many bytes of the frame the master has accepted, including the address; 0 if it
  /// was not ready. Returns false and changes nothing if `count` exceeds the frame.
  [[nodiscard]] bool accept(std::size_t count);

 private:
  [[nodiscard]] std::size_t offered() const;

  std::string rest_;  // the part of address and message that has not been accepted
  bool begun_ = false;
};

/// The count in the answer to a relayed frame: two bytes, high byte first. No value for any other
/// answer.
[[nodiscard]] std::optional<std::size_t> accepted_count(std::string_view reply);

/// The result of a fetch. An answer without a status byte counts as failed.
struct Fetched {
  enum class Status { complete, more, failed };
  Status status;
  std::string_view data;
};
[[nodiscard]] Fetched read_fetched(std::string_view reply);

// --- Info blocks ---

/// The beginnings of info blocks, which identify the model.
inline constexpr std::string_view bus_model{"BUS\0", 4};
inline constexpr std::string_view reader_model{"QVRN", 4};

/// The speeds that a device supports, by index.
struct SpeedTable {
  std::vector<bool> speeds;
  std::size_t end;  ///< offset of the byte after the table in the info block

  [[nodiscard]] bool has(std::size_t index) const { return index < speeds.size() && speeds[index]; }
};
/// Reads the table in an info block. Normally it is one word of 15 entries. Each further word
/// begins one entry after the start of the previous one and overrides it. Throws std::runtime_error
/// "Broken Speed Table" when the block ends before the table does.
[[nodiscard]] SpeedTable read_speed_table(std::string_view info);

/// The content of a bus master's info block.
struct BusInfo {
  SpeedTable table;
  bool speed_scan;         ///< a scan need not try one speed after the other
  std::uint8_t max_speed;  ///< the highest speed index
};
/// No value if it is no master's info block. Throws as `read_speed_table` does.
[[nodiscard]] std::optional<BusInfo> read_bus_info(std::string_view info);

/// The content of a RailCom reader's info block.
struct ReaderInfo {
  SpeedTable table;
  std::uint8_t input_count;
  std::uint8_t encodings;  ///< supported encodings of poll answers; bit n is encoding n
};
/// No value if it is no reader's info block, or has more than 255 inputs. Throws as
/// `read_speed_table` does.
[[nodiscard]] std::optional<ReaderInfo> read_reader_info(std::string_view info);

// --- What a RailCom reader understands ---

[[nodiscard]] std::string use_encoding(std::uint8_t encoding);
/// Input i is bit i mod 8 of byte i / 8.
[[nodiscard]] std::string enable_inputs(const std::vector<bool>& inputs);
/// Resets the poll answers: they begin with the states of all inputs, without a history of packets.
[[nodiscard]] std::string reset_stream();
/// Fetches the events since the last poll.
[[nodiscard]] std::string poll();

}  // namespace zemblar::tessara

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "core/address.h"
#include "core/direction.h"
#include "devices/driven_decoder.h"

/// The messages of a Lenz LI-USB: XpressNet messages after a header of two bytes. Pure functions.
///
/// Standard (the XpressNet protocol that Lenz publishes): a message is a header byte, whose low
/// four bits count the data bytes that follow, the data, and a check byte, the exclusive or of them
/// all. On USB 0xFF 0xFE precedes a request and its answer, 0xFF 0xFD a broadcast of the station.
/// Here messages are without these bytes and the check byte.
namespace zemblar::liusb {

using Bytes = std::vector<std::uint8_t>;

/// The longest frame: two bytes, a header, 15 data bytes, the check byte.
inline constexpr std::size_t max_frame = 19;

/// The message as sent on the line. Its length must agree with its first byte.
[[nodiscard]] Bytes frame(const Bytes& message);

/// Extracts the answers from the received bytes, which may arrive in any pieces. Skips broadcasts,
/// and drops bytes that begin no valid frame one at a time. A stray 0xFF 0xFE may therefore swallow
/// the answer after it, since frames have no other mark.
class AnswerReader {
 public:
  void add(std::span<const std::uint8_t> bytes);
  [[nodiscard]] std::optional<Bytes> next();
  /// The track power in the last skipped broadcast, returned once.
  [[nodiscard]] std::optional<bool> take_power() { return std::exchange(power_, {}); }

 private:
  void drop(std::size_t count);
  [[nodiscard]] bool checks(std::size_t length) const;

  Bytes bytes_;
  std::optional<bool> power_;
};

// --- Requests ---

inline const Bytes interface_version = {0xf0};
inline const Bytes station_status = {0x21, 0x24};
/// Sets the station's start mode: do nothing with locomotives when switched on.
inline const Bytes start_mode = {0x22, 0x22, 0x00};
inline const Bytes power_on = {0x21, 0x81};
inline const Bytes power_off = {0x21, 0x80};

/// True if the station supports the address: short ones from 1 to 99, long ones from 100 to 9999.
[[nodiscard]] bool can_drive(Address address);
/// True for accessory decoders from 1 to 256.
[[nodiscard]] bool can_switch(unsigned address);

/// Speed 0 to 126 or DecoderUpdate::emergency_stop. Fails an assertion unless `can_drive`.
[[nodiscard]] Bytes drive(Address address, DecoderType type, std::uint32_t speed,
                          Direction direction);
/// The last byte of a `drive` message.
[[nodiscard]] std::uint8_t speed_byte(DecoderType type, std::uint32_t speed, Direction direction);

/// A group of functions that are sent together.
struct FunctionGroup {
  std::uint8_t id;
  unsigned first;
  unsigned last;

  /// The functions' bits as in DecoderUpdate.
  [[nodiscard]] std::uint32_t mask() const;
};
/// The group of a function from 0 to 28.
[[nodiscard]] const FunctionGroup& group_of(unsigned fn);
/// `functions` as in DecoderUpdate. Fails an assertion unless `can_drive`.
[[nodiscard]] Bytes set_functions(Address address, const FunctionGroup& group,
                                  std::uint32_t functions);

/// To switch an output of a point, energise it and then release it. Outputs count from 1 to 4; `on`
/// selects one coil of the pair. A value out of range fails an assertion.
[[nodiscard]] Bytes energise(unsigned address, unsigned output, bool on);
[[nodiscard]] Bytes release(unsigned address, unsigned output, bool on);

// --- Answers ---

/// True if the answer says that the request was carried out.
[[nodiscard]] bool is_done(const Bytes& answer);

struct StationStatus {
  bool power = false;
  bool wants_start_mode = false;
};
/// No value for another message.
[[nodiscard]] std::optional<StationStatus> read_status(const Bytes& answer);

/// The track power in a broadcast: 0x61 0x00 is off, 0x61 0x01 is on. No value for another one.
[[nodiscard]] std::optional<bool> read_power(const Bytes& broadcast);
/// The broadcast frame by which a station confirms that its track power is off. An answer that is
/// no broadcast may belong to an earlier request.
inline const Bytes power_is_off = {0xff, 0xfd, 0x61, 0x00, 0x61};

}  // namespace zemblar::liusb

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

/// What a Lenz LI-USB says and hears: XpressNet messages behind a header of two bytes. Pure.
///
/// Standard (the XpressNet protocol that Lenz publishes): a message is a header byte, whose low
/// four bits count the data bytes that follow, the data, and a check byte, the exclusive or of them
/// all. On USB 0xFF 0xFE comes before a request and its answer, 0xFF 0xFD before what the station
/// tells everybody. Messages are held here without header and check byte.
namespace zemblar::liusb {

using Bytes = std::vector<std::uint8_t>;

/// The longest frame: two bytes, a header, 15 data bytes, the check byte.
inline constexpr std::size_t max_frame = 19;

/// The message as it goes over the line. Its length must be what its first byte says.
[[nodiscard]] Bytes frame(const Bytes& message);

/// Finds the answers in what arrives, in whatever pieces. Broadcasts are skipped, and bytes that
/// begin no good frame dropped one at a time. A stray 0xFF 0xFE may so swallow the answer behind
/// it: nothing in the frames tells.
class AnswerReader {
 public:
  void add(std::span<const std::uint8_t> bytes);
  [[nodiscard]] std::optional<Bytes> next();
  /// The track power that the last of the skipped broadcasts spoke of, once.
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
/// What the station does with its locomotives when it is switched on: nothing.
inline const Bytes start_mode = {0x22, 0x22, 0x00};
inline const Bytes power_on = {0x21, 0x81};
inline const Bytes power_off = {0x21, 0x80};

/// Whether the station has that address: short ones from 1 to 99, long ones from 100 to 9999.
[[nodiscard]] bool can_drive(Address address);
/// Accessory decoders from 1 to 256.
[[nodiscard]] bool can_switch(unsigned address);

/// Speed 0 to 126 or DecoderUpdate::emergency_stop. Fails an assertion unless `can_drive`.
[[nodiscard]] Bytes drive(Address address, DecoderType type, std::uint32_t speed,
                          Direction direction);
/// The last byte of it.
[[nodiscard]] std::uint8_t speed_byte(DecoderType type, std::uint32_t speed, Direction direction);

/// Functions that are sent together.
struct FunctionGroup {
  std::uint8_t id;
  unsigned first;
  unsigned last;

  /// As in DecoderUpdate.
  [[nodiscard]] std::uint32_t mask() const;
};
/// The group of a function from 0 to 28.
[[nodiscard]] const FunctionGroup& group_of(unsigned fn);
/// `functions` as in DecoderUpdate. Fails an assertion unless `can_drive`.
[[nodiscard]] Bytes set_functions(Address address, const FunctionGroup& group,
                                  std::uint32_t functions);

/// What a point's output needs: energised, then released. Outputs count from 1 to 4; `on` chooses
/// one coil of the pair. A value out of range fails an assertion.
[[nodiscard]] Bytes energise(unsigned address, unsigned output, bool on);
[[nodiscard]] Bytes release(unsigned address, unsigned output, bool on);

// --- Answers ---

/// Whether the station says that it did as told.
[[nodiscard]] bool is_done(const Bytes& answer);

struct StationStatus {
  bool power = false;
  bool wants_start_mode = false;
};
/// Nothing for another message.
[[nodiscard]] std::optional<StationStatus> read_status(const Bytes& answer);

/// The track power that a broadcast tells of: 0x61 0x00 is off, 0x61 0x01 on. Nothing for another.
[[nodiscard]] std::optional<bool> read_power(const Bytes& broadcast);
/// The frame in which a station tells everybody that its track power is off, as it answers the
/// order to switch it off. An answer to the asker alone may belong to an earlier request.
inline const Bytes power_is_off = {0xff, 0xfd, 0x61, 0x00, 0x61};

}  // namespace zemblar::liusb

#pragma once

#include <map>
#include <utility>
#include <vector>

#include "core/status.h"
#include "devices/driven_decoder.h"
#include "runtime/timer.h"

namespace zemblar {

/// The speeds, directions and functions that a station has refused. Keeping them back prevents an
/// item that is always refused from blocking all others.
///
/// A refused item is kept back for 2 s, and twice as long after each further refusal, up to 60 s.
/// Another value of the item is a new command and is sent at once. An item during which the
/// connection has ended is not kept back, but is sent last in its rank. The entry of an item, with
/// its note in the status line, ends when the station accepts the item or no decoder wants it any
/// more.
///
/// An item is a bit of DecoderUpdate; its decoder is identified by the address. A decoder whose
/// item is kept back is held, and its `complete` is called when the time has passed, so that it
/// asks again.
class RefusedItems {
 public:
  static constexpr std::chrono::seconds first_pause{2};
  static constexpr std::chrono::seconds longest_pause{60};

  // In all of these, `sent` has the item in its mask, and its value.

  /// Call when the station has refused the item, or its operator has taken control away. Keeps the
  /// item back for `pause`, and shows `message` in the status line.
  void refuse(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
              const Glib::ustring& message);
  /// How long the item should be kept back if it is refused now.
  [[nodiscard]] std::chrono::seconds next_pause(Address address, const DecoderUpdate& sent) const;
  /// Call when the connection has ended while the item was being sent.
  void suspect(Address address, const DecoderUpdate& sent);
  /// Call when the station has accepted the item.
  void accept(Address address, std::uint32_t item);

  /// True if the present value of the item must wait; the decoder's `complete` is called later.
  bool withhold(DrivenDecoder& decoder, std::uint32_t item);
  /// True if all items that the decoder would send next have been refused.
  [[nodiscard]] bool refuses_all(const DrivenDecoder& decoder) const;
  /// True if an item of the decoder has been refused, or the connection has ended during one. Other
  /// items for it may then be refused too, or end the connection for all waiting decoders.
  [[nodiscard]] bool suspects(const DrivenDecoder& decoder) const;

 private:
  using Key = std::pair<Address, std::uint32_t>;
  struct Entry {
    std::uint32_t value = 0;
    bool refused = false;
    bool waits = false;  // kept back until `timer` ends
    std::chrono::seconds pause{0};
    std::vector<Glib::RefPtr<DrivenDecoder>> asking{};
    StatusNote note{};
    Timeout timer{};
  };

  [[nodiscard]] const Entry* find(Address address, std::uint32_t item, std::uint32_t value) const;
  [[nodiscard]] const Entry* find(const DrivenDecoder& decoder, std::uint32_t item) const;
  void ask_again(const Key& key);

  std::map<Key, Entry> entries_;
};

}  // namespace zemblar

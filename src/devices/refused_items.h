#pragma once

#include <map>
#include <utility>
#include <vector>

#include "core/status.h"
#include "devices/driven_decoder.h"
#include "runtime/timer.h"

namespace zemblar {

/// The speeds, directions and functions that a station has not taken, so that one that it never
/// takes does not keep all others from it.
///
/// A refused item is kept back for 2 s, then for twice as long after each refusal that follows, up
/// to 60 s; another value of it is a new wish and goes out at once. An item during which the
/// connection ended is not kept back, but goes last among its like. The entry of an item, and its
/// note in the status line, end when the station takes the item or nobody wishes it any more.
///
/// An item is a bit of DecoderUpdate, its decoder is known by the address. Timers run here:
/// decoders are held, and asked again by `complete` when the time has come.
class RefusedItems {
 public:
  static constexpr std::chrono::seconds first_pause{2};
  static constexpr std::chrono::seconds longest_pause{60};

  // `sent` has the item in its mask, and the value.

  /// The station has refused it, or a person has cut it off: it is kept back for `pause`. `message`
  /// is for the status line.
  void refuse(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
              const Glib::ustring& message);
  /// For how long it will be kept back if it is refused now.
  [[nodiscard]] std::chrono::seconds next_pause(Address address, const DecoderUpdate& sent) const;
  /// The connection has ended during it.
  void suspect(Address address, const DecoderUpdate& sent);
  /// The station has taken the item.
  void accept(Address address, std::uint32_t item);

  /// True when the value that the decoder wants has to wait; it is asked again then.
  bool withhold(DrivenDecoder& decoder, std::uint32_t item);
  /// All that the decoder would send next has been refused.
  [[nodiscard]] bool refuses_all(const DrivenDecoder& decoder) const;
  /// Something of that locomotive has been refused, or the connection has ended during it. What
  /// else is sent to it may be refused as well, and end the connection for all who wait.
  [[nodiscard]] bool suspects(const DrivenDecoder& decoder) const;

 private:
  using Key = std::pair<Address, std::uint32_t>;
  struct Entry {
    std::uint32_t value = 0;
    bool refused = false;
    bool waits = false;  // its time has not come yet
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

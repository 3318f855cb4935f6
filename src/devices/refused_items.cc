#include "devices/refused_items.h"

#include <algorithm>

namespace zemblar {
namespace {

/// The items that a decoder sends next: speed before direction before all functions together.
std::uint32_t next_items(const DrivenDecoder& decoder) {
  const auto mask = decoder.state().mask;
  for (const auto bit : {DecoderUpdate::speed_bit, DecoderUpdate::direction_bit}) {
    if (mask & bit) return bit;
  }
  return mask;
}

template <typename Holds>
bool any_item(std::uint32_t items, const Holds& holds) {
  for (; items != 0; items &= items - 1) {
    if (holds(items & (~items + 1))) return true;
  }
  return false;
}

bool wishes(const DrivenDecoder& decoder, Address address, std::uint32_t item,
            std::uint32_t value) {
  return decoder.get_address() == address && (decoder.state().mask & item) != 0 &&
         decoder.state().value_of(item) == value;
}

}  // namespace

const RefusedItems::Entry* RefusedItems::find(Address address, std::uint32_t item,
                                              std::uint32_t value) const {
  const auto found = entries_.find({address, item});
  return found != entries_.end() && found->second.value == value ? &found->second : nullptr;
}

const RefusedItems::Entry* RefusedItems::find(const DrivenDecoder& decoder,
                                              std::uint32_t item) const {
  return find(decoder.get_address(), item, decoder.state().value_of(item));
}

std::chrono::seconds RefusedItems::next_pause(Address address, const DecoderUpdate& sent) const {
  const auto* entry = find(address, sent.mask, sent.value_of(sent.mask));
  return entry && entry->refused ? std::min(entry->pause * 2, longest_pause) : first_pause;
}

void RefusedItems::refuse(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
                          const Glib::ustring& message) {
  const Key key(address, sent.mask);
  auto& entry = entries_[key];
  entry.value = sent.value_of(sent.mask);
  entry.refused = entry.waits = true;
  entry.pause = pause;
  entry.note.show(message);
  entry.timer = Timeout::once(pause, [this, key] { ask_again(key); });
}

void RefusedItems::suspect(Address address, const DecoderUpdate& sent) {
  const auto value = sent.value_of(sent.mask);
  if (find(address, sent.mask, value)) return;
  entries_.erase({address, sent.mask});
  entries_[{address, sent.mask}].value = value;
}

void RefusedItems::accept(Address address, std::uint32_t item) {
  const auto found = entries_.find({address, item});
  if (found == entries_.end()) return;
  // Another decoder with this address may be waiting with another value.
  const auto asking = std::move(found->second.asking);
  entries_.erase(found);
  for (const auto& decoder : asking) decoder->complete({});
}

bool RefusedItems::withhold(DrivenDecoder& decoder, std::uint32_t item) {
  if (entries_.empty() || !find(decoder, item)) return false;
  auto& entry = entries_[{decoder.get_address(), item}];
  if (!entry.waits) return false;
  decoder.reference();
  const Glib::RefPtr<DrivenDecoder> asking(&decoder);
  std::erase_if(entry.asking,
                [&](const auto& other) { return &other->origin() == &decoder.origin(); });
  entry.asking.push_back(asking);
  return true;
}

// `complete` may lead to another refusal at once, or end the device.
void RefusedItems::ask_again(const Key& key) {
  auto& entry = entries_[key];
  entry.waits = false;
  const auto asking = std::exchange(entry.asking, {});
  const auto value = entry.value;
  const bool is_wished = std::ranges::any_of(asking, [&](const auto& one) {
    return wishes(*one.operator->(), key.first, key.second, value);
  });
  if (!is_wished) entries_.erase(key);
  for (const auto& decoder : asking) decoder->complete({});
}

bool RefusedItems::refuses_all(const DrivenDecoder& decoder) const {
  if (entries_.empty()) return false;
  return !any_item(next_items(decoder), [&](std::uint32_t item) {
    const auto* entry = find(decoder, item);
    return !entry || !entry->refused;
  });
}

bool RefusedItems::suspects(const DrivenDecoder& decoder) const {
  const auto first = entries_.lower_bound({decoder.get_address(), 0});
  return first != entries_.end() && first->first.first == decoder.get_address();
}

}  // namespace zemblar

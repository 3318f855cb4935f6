#include "devices/station_proxy.h"

#include "devices/device.h"

namespace zemblar {

Glib::RefPtr<StationProxy> StationProxy::create(const Glib::RefPtr<DrivenDecoder>& parent,
                                                std::uint32_t item, Device& station,
                                                const Glib::RefPtr<DecoderProxy>& answers) {
  return Glib::RefPtr<StationProxy>(new StationProxy(parent, item, station, answers));
}

// What else is out of date tells the station which functions are the decoder's own wish.
StationProxy::StationProxy(const Glib::RefPtr<DrivenDecoder>& parent, std::uint32_t item,
                           Device& station, const Glib::RefPtr<DecoderProxy>& answers)
    : DecoderProxy(parent.operator->()),
      parent_(parent),
      item_(item),
      station_(&station),
      answers_(answers) {
  state_.mask = parent->state().mask | item;
}

void StationProxy::ask() {
  if (!station_) return;
  is_withheld_ = station_->withholds(*this, item_);
  if (!is_withheld_) station_->run_update(this, item_);
}

// The decoder does not wait for what was let go of, and counts it as delivered.
bool StationProxy::is_wanted() const {
  const auto& wish = parent_->state();
  const bool is_awaited = (wish.mask & item_) != 0 || !answers_;
  return is_awaited && !parent_->is_retired() && wish.value_of(item_) == state_.value_of(item_);
}

void StationProxy::complete(const DecoderUpdate& delivered) {
  if (!station_) return;
  const bool is_delivered = (state_.agreeing(delivered) & delivered.mask & item_) != 0;
  if (!is_delivered && is_wanted() && station_->active()) return ask();
  end(delivered);
}

void StationProxy::abandon() {
  if (station_) end({});
}

// The answer may be the last one, and end the command.
void StationProxy::end(const DecoderUpdate& delivered) {
  station_ = nullptr;
  state_.mask = 0;
  const auto answers = answers_;
  if (answers) answers->complete(delivered);
}

}  // namespace zemblar

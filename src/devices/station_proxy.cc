#include "devices/station_proxy.h"

#include <utility>

#include "devices/device.h"

namespace zemblar {

Glib::RefPtr<StationProxy> StationProxy::create(const Glib::RefPtr<DrivenDecoder>& parent,
                                                std::uint32_t item, Device& station,
                                                const Glib::RefPtr<DecoderProxy>& answers) {
  return Glib::RefPtr<StationProxy>(new StationProxy(parent, item, station, answers));
}

StationProxy::StationProxy(const Glib::RefPtr<DrivenDecoder>& parent, std::uint32_t item,
                           Device& station, const Glib::RefPtr<DecoderProxy>& answers)
    : DecoderProxy(parent.operator->()),
      parent_(parent),
      item_(item),
      station_(&station),
      answers_(answers) {}

// The mask includes the decoder's other items that are out of date, which tell a driver which
// functions this decoder wants to change.
const DecoderUpdate& StationProxy::state() const {
  newest_ = parent_->state();
  newest_.mask = station_ && !parent_->is_retired() ? newest_.mask | item_ : 0;
  return newest_;
}

void StationProxy::ask() {
  if (!station_) return;
  is_withheld_ = station_->withholds(*this, item_);
  if (!is_withheld_) station_->run_update(this, item_);
}

bool StationProxy::is_held_up() const {
  return is_withheld_ ||
         (station_ && station_->link_state().phase == LinkPhase::waiting_for_answer);
}

// After `let_go` the decoder counts the item as delivered, so its mask does not decide any more.
bool StationProxy::is_wanted() const {
  const bool is_awaited = (parent_->state().mask & item_) != 0 || !answers_;
  return is_awaited && !parent_->is_retired();
}

void StationProxy::complete(const DecoderUpdate& delivered) {
  if (!station_) return;
  auto more = delivered;
  more.mask &= ~item_;
  if (more_ && more.mask != 0) more_(more);
  const bool is_delivered = (state().agreeing(delivered) & delivered.mask & item_) != 0;
  if (!is_delivered && is_wanted() && station_->active()) return ask();
  end(delivered);
}

void StationProxy::abandon() {
  if (station_) end({});
}

// Answers with the common value of the other stations' answers, limited to this item.
void StationProxy::let_go() {
  const auto answers = std::exchange(answers_, {});
  if (!answers) return;
  auto same = answers->state();
  same.mask = item_;
  answers->complete(same);
}

// The answer may be the last one, which ends the command.
void StationProxy::end(const DecoderUpdate& delivered) {
  station_ = nullptr;
  const auto answers = answers_;
  if (answers) answers->complete(delivered);
}

}  // namespace zemblar

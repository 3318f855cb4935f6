#include "ui/status/trains_standing.h"

#include <utility>

#include "core/i18n.h"
#include "core/status.h"
#include "locomotives/moving_trains.h"

namespace zemblar {

void when_trains_stand(std::function<void()> action, const Device* device) {
  static auto* standing = new StandStill;
  if (!standing->under_way() && any_train_moves(device)) {
    set_status(_("The trains are stopped first."));
  }
  if (standing->begin(std::move(action), device)) return;
  set_status(_("The trains are still being stopped: choose that again in a second."));
}

}  // namespace zemblar

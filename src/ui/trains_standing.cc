#include "ui/trains_standing.h"

namespace zemblar {

StandStill& trains_standing() {
  static auto* standing = new StandStill;
  return *standing;
}

}  // namespace zemblar

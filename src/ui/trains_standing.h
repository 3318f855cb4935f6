#pragma once

#include "locomotives/moving_trains.h"

namespace zemblar {

/// What a person does next to the document has to wait here until the trains stand. One action at a
/// time: another is dropped while one waits.
StandStill& trains_standing();

}  // namespace zemblar

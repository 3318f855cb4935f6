#pragma once

#include <vector>

#include "scripts/script_event.h"

namespace zemblar {

class Script;

/// What a condition of a script says now, whether it watches its subject or sleeps.
struct ConditionAnswer {
  enum class Kind {
    off,           ///< the condition is switched off
    holds,         ///< for `instances`, given what the conditions before it have found
    fails,         ///< though the conditions before it hold
    holds_alone,   ///< for `instances`, while a condition before it fails
    fails_as_well  ///< and so does a condition before it
  };
  Kind kind = Kind::off;
  std::vector<EventInstance> instances{};
  bool completes = false;  ///< the last one of its alternative: the script runs for `instances`
};

/// One answer for each condition, in their order. Starts nothing.
[[nodiscard]] std::vector<ConditionAnswer> ask_conditions(const Script& script);

}  // namespace zemblar

#include "scripts/condition_answers.h"

#include <set>

#include "scripts/script.h"

namespace zemblar {
namespace {

using Kind = ConditionAnswer::Kind;
using Instances = std::vector<EventInstance>;

/// Without repetitions, in the order in which the condition finds them.
Instances ask(ScriptEvent& condition, const Instances& found_before) {
  Instances all;
  std::set<EventInstance> known;
  for (const auto& partial : found_before) {
    InstanceWalk walk(condition, partial);
    while (const auto* found = walk.next()) {
      if (known.insert(*found).second) all.push_back(*found);
    }
  }
  return all;
}

}  // namespace

std::vector<ConditionAnswer> ask_conditions(const Script& script) {
  std::vector<ConditionAnswer> answers(script.get_num_conditions());
  const Instances nothing(1);
  Instances found = nothing;
  ConditionAnswer* last = nullptr;  // of the present alternative
  for (unsigned i = 0; i < answers.size(); ++i) {
    auto& condition = *script.get_condition(i);
    if (i != 0 && condition.get_or_flag()) {
      if (last) last->completes = last->kind == Kind::holds;
      last = nullptr;
      found = nothing;
    }
    if (condition.is_off()) continue;
    auto& answer = answers[i];
    const bool alone = found.empty();
    answer.instances = ask(condition, alone ? nothing : found);
    const bool holds = !answer.instances.empty();
    answer.kind = alone ? (holds ? Kind::holds_alone : Kind::fails_as_well)
                        : (holds ? Kind::holds : Kind::fails);
    if (!alone) found = answer.instances;
    last = &answer;
  }
  if (last) last->completes = last->kind == Kind::holds;
  return answers;
}

}  // namespace zemblar

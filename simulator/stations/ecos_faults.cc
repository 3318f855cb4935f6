#include "simulator/stations/ecos_faults.h"

namespace zemblar::simulator {
namespace {

bool asks_for_control(std::string_view line) {
  const auto parsed = parse_command(line);
  const auto* command = std::get_if<EcosCommand>(&parsed);
  return command && command->verb == "request" && command->find("control");
}

// Counts a command that fits the rule; says whether the rule hits it.
bool count(EcosFaults::Rule& rule) {
  if (rule.skip > 0) {
    --rule.skip;
    return false;
  }
  if (!rule.times) return true;
  if (*rule.times == 0) return false;
  --*rule.times;
  return true;
}

}  // namespace

void EcosFaults::fail(std::string prefix, unsigned status, std::optional<unsigned> times) {
  add({.effect = Effect::fail, .prefix = std::move(prefix), .times = times, .status = status});
}

void EcosFaults::silence(std::string prefix, std::optional<unsigned> times) {
  add({.effect = Effect::silence, .prefix = std::move(prefix), .times = times});
}

void EcosFaults::drop_after(unsigned commands, std::string prefix) {
  add({.effect = Effect::drop, .prefix = std::move(prefix), .skip = commands, .times = 1});
}

std::optional<EcosFaults::Rule> EcosFaults::hit(std::string_view line) {
  for (auto& rule : rules_) {
    if (line.starts_with(rule.prefix) && count(rule)) return rule;
  }
  if (refuse_control && asks_for_control(line)) {
    return Rule{.effect = Effect::fail, .status = static_cast<unsigned>(EcosStatus::no_control)};
  }
  return std::nullopt;
}

}  // namespace zemblar::simulator

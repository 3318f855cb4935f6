#pragma once

#include "scripts/lok_subject.h"
#include "scripts/script_event.h"

namespace zemblar {

/// "%1 %2 Speed %3 %4 %5": compares a locomotive's intended speed, or its travel speed, with a
/// value. Speeds are not compared yet: the line can be edited and saved, but never holds.
///
/// In a layout file `Any`, `This`, the locomotive's number or null; `eq`, `gt`, `ge`, `lt` or `le`,
/// and with "is not" `ne`, `ngt`, `nge`, `nlt` or `nle`; the speed; `%` or `km/h`; and `travel` for
/// the travel speed.
class ScriptEventLokSpeed : public ScriptEvent {
 public:
  ScriptEventLokSpeed();
  explicit ScriptEventLokSpeed(const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void generate_instances(const EventInstance& /*partial*/) override {}

  [[nodiscard]] bool is_armed() const override { return false; }
  [[nodiscard]] Glib::ustring asleep_because() const override;

 private:
  enum Subject : int { chosen = 0, any = 1, this_one = 2 };

  [[nodiscard]] std::vector<Argument> arguments() override;
  void choose_subject(Lok* named, Subject type);
  [[nodiscard]] std::vector<ScriptChoice> subject_choices();
  void read_compare(const YAML::Node& node);

  LokSubject lok;
  int lok_type = this_one;
  bool travel = false;
  bool negate = false;
  unsigned compare = 0;
  SpeedArg speed{.speed = 50, .km_h = false};
};

}  // namespace zemblar

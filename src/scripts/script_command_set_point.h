#pragma once

#include "scripts/point_subject.h"
#include "scripts/script_command.h"

namespace zemblar {

/// "Set %1 to %2": sets a point or signal as a click in the track view does. In a script with
/// "While" the state is taken back.
///
/// In a layout file the number of the point and that of the state; null for none.
class ScriptCommandSetPoint : public ScriptCommand {
 public:
  explicit ScriptCommandSetPoint(Script& owner);
  ScriptCommandSetPoint(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

  [[nodiscard]] const PointSubject& get_subject() const { return subject_; }
  void set_point(PointBase* point);
  void set_state(PointState* state);

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;

  PointSubject subject_;
};

}  // namespace zemblar

#pragma once

#include "scripts/point_subject.h"
#include "scripts/watching_event.h"

namespace zemblar {

/// "%1 is %2": a point or signal is in one of its states. Keeps the block and the locomotive that
/// the lines before have found.
///
/// In a layout file the number of the point and that of the state; null for none.
class ScriptEventPointState : public WatchingEvent {
 public:
  ScriptEventPointState();
  explicit ScriptEventPointState(const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void generate_instances(const EventInstance& partial) override;
  [[nodiscard]] bool is_settled() const override;

  [[nodiscard]] const PointSubject& get_subject() const { return subject_; }

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Watches watch() override;
  [[nodiscard]] bool has_subject() const override { return subject_.get_point() != nullptr; }
  [[nodiscard]] Glib::ustring no_subject_words() const override;

 private:
  void choose_point(PointBase* point);
  void choose_state(PointState* state);

  PointSubject subject_;
};

}  // namespace zemblar

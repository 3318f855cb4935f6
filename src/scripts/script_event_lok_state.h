#pragma once

#include "scripts/lok_subject.h"
#include "scripts/watching_event.h"

namespace zemblar {

/// "%1 %2": a locomotive, any locomotive, or the one that the lines before have found, is held by
/// block control, stands, drives, has no place on the track, or is in the block that the lines
/// before have found. It stands when nothing commands it to move, or when it is held; it drives
/// otherwise. It is in all blocks of its span.
///
/// Finds the locomotive, and keeps the block that the lines before have found.
///
/// In a layout file `Any`, `This`, the locomotive's number or null; then `held`, `standing`,
/// `driving`, `lost` or `here`.
class ScriptEventLokState : public WatchingEvent {
 public:
  enum class State { held, standing, driving, lost, here };

  ScriptEventLokState();
  explicit ScriptEventLokState(const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  [[nodiscard]] bool is_armed() const override;
  void generate_instances(const EventInstance& partial) override;
  void choose_state(State state);

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Watches watch() override;
  [[nodiscard]] bool has_subject() const override;
  [[nodiscard]] Glib::ustring no_subject_words() const override;

 private:
  enum class Whose { chosen, any, this_one };

  void choose_subject(Lok* named, Whose whose);
  [[nodiscard]] bool lacks_lines_before() const;
  void test(Lok* lok, const EventInstance& partial) const;

  LokSubject lok_;
  Whose whose_ = Whose::any;
  State state_ = State::held;
};

}  // namespace zemblar

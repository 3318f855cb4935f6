#pragma once

#include "scripts/watching_event.h"

namespace zemblar {

/// "Track Power is %1": on when every station that can switch it reports it on. Keeps the block and
/// the locomotive that the lines before have found.
///
/// In a layout file true for on, false for off.
class ScriptEventTrackPower : public WatchingEvent {
 public:
  ScriptEventTrackPower() = default;
  explicit ScriptEventTrackPower(const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void generate_instances(const EventInstance& partial) override;

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Watches watch() override;
  [[nodiscard]] bool has_subject() const override { return true; }
  [[nodiscard]] Glib::ustring no_subject_words() const override { return {}; }

 private:
  void choose(bool on);

  bool on_ = true;
};

}  // namespace zemblar

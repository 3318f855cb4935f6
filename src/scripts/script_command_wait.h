#pragma once

#include "scripts/script_command.h"

namespace zemblar {

/// "Wait %1 seconds". In a layout file the seconds, with one decimal at most.
class ScriptCommandWait : public ScriptCommand {
 public:
  explicit ScriptCommandWait(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandWait(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

  /// The delay in tenths of a second.
  [[nodiscard]] unsigned get_delay() const { return delay; }

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  /// Seconds, limited to 0.1 to 3600.
  void set_seconds(double seconds);

  unsigned delay = 100;
};

/// "Wait until initial event is finished": waits until the instance of the run is announced as
/// finished. If that has happened already, waits until it happens again.
class ScriptCommandWaitInitEvent : public ScriptCommand {
 public:
  explicit ScriptCommandWaitInitEvent(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandWaitInitEvent(Script& owner, const YAML::Node& /*entry*/) : ScriptCommand(owner) {}

  void save(YAML::Emitter& /*out*/) const override {}
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;
};

}  // namespace zemblar

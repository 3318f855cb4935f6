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
  [[nodiscard]] Glib::ustring get_arg_text(unsigned arg) const override;
  [[nodiscard]] ArgType get_arg_type(unsigned arg) const override;
  void get_spin_range(unsigned arg, SpinRange& range) const override;
  /// Seconds, limited to 0.1 to 3600.
  void set_spin_value(unsigned arg, double value) override;
  void run(ScriptContext& context) override;

  /// The delay in tenths of a second.
  [[nodiscard]] unsigned get_delay() const { return delay; }

 private:
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

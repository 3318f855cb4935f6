#pragma once

#include "scripts/block_subject.h"
#include "scripts/point_subject.h"
#include "scripts/script_command.h"

namespace zemblar {

/// A command that waits for a state of the railway, for ever or for a longest time, after which the
/// run goes on with the next command. The run ends when what it waits for ends.
///
/// In a layout file the last element is the longest time in whole seconds, 0 for none.
class ScriptCommandWaitUntil : public ScriptCommand {
 public:
  void run(ScriptContext& context) override;

  [[nodiscard]] unsigned get_limit() const { return limit_; }

 protected:
  using Watches = std::vector<ScopedConnection>;
  enum class Outlook { waits, holds, gone };

  explicit ScriptCommandWaitUntil(Script& owner) : ScriptCommand(owner) {}

  [[nodiscard]] virtual Outlook look(const ScriptContext& context) const = 0;
  /// Connects all on which `look` depends. Only when `look` has returned `waits`.
  [[nodiscard]] virtual Watches watch(const ScriptContext& context,
                                      const sigc::slot<void>& changed) = 0;

  [[nodiscard]] Argument limit_argument(unsigned arg);
  void read_limit(const YAML::Node& node);

 private:
  unsigned limit_ = 0;
};

/// "Wait until %1 is %2 (%3)": a block, or the block of the run, is free or occupied. A block that
/// a locomotive holds is occupied. To the locomotive of the run, one that it holds itself is free
/// as long as block control does not hold the locomotive back: a level that is taken back under
/// the brake would not be sent.
///
/// In a layout file `This`, the block's number or null, then `free` or `occupied`.
class ScriptCommandWaitBlock : public ScriptCommandWaitUntil {
 public:
  explicit ScriptCommandWaitBlock(Script& owner);
  ScriptCommandWaitBlock(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Outlook look(const ScriptContext& context) const override;
  [[nodiscard]] Watches watch(const ScriptContext& context,
                              const sigc::slot<void>& changed) override;

 private:
  BlockSubject block_;
  bool occupied_ = false;
};

/// "Wait until %1 is %2 (%3)": a point or signal is in a state.
///
/// In a layout file the numbers of the point and of the state; null for none.
class ScriptCommandWaitPoint : public ScriptCommandWaitUntil {
 public:
  explicit ScriptCommandWaitPoint(Script& owner);
  ScriptCommandWaitPoint(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Outlook look(const ScriptContext& context) const override;
  [[nodiscard]] Watches watch(const ScriptContext& context,
                              const sigc::slot<void>& changed) override;

 private:
  PointSubject subject_;
};

}  // namespace zemblar

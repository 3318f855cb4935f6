#pragma once

#include "scripts/block_subject.h"
#include "scripts/script_command_lok.h"

namespace zemblar {

/// "Reserve %2 for %1": waits until the block is free and its turn has come, then keeps it for the
/// locomotive; see Reservation. Who waits for what is in the status line meanwhile.
///
/// The reservation ends with the run, with ScriptCommandRelease, and when the locomotive has passed
/// through the block. The run ends if there is no locomotive or no block, or if one of them ends
/// while it waits: what follows in the script is not safe without the reservation.
///
/// In a layout file the locomotive, then the block as BlockSubject has it.
class ScriptCommandReserve : public ScriptCommandLok {
 public:
  explicit ScriptCommandReserve(Script& owner);
  ScriptCommandReserve(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  void connect();

  BlockSubject block_;
};

/// "Release %1": ends what this run has reserved there. Nothing happens without a reservation.
class ScriptCommandRelease : public ScriptCommand {
 public:
  explicit ScriptCommandRelease(Script& owner);
  ScriptCommandRelease(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;

  BlockSubject block_;
};

}  // namespace zemblar

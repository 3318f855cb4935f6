#pragma once

#include "runtime/scoped_connection.h"
#include "scripts/script_event.h"

namespace zemblar {

/// "%1 is %2": a block, any block, or the block that the lines before have found ("This Block"), is
/// occupied or unoccupied. A locomotive that block control has placed in a block occupies it.
///
/// The condition watches nothing until its subject is chosen. "This Block" is not watched, because
/// the condition then depends on the line before. When the chosen block ends, the subject becomes
/// "This Block".
///
/// In a layout file `Any`, `This` or the block's number, then whether it is to be occupied.
class ScriptEventOccupied : public ScriptEvent {
 public:
  ScriptEventOccupied() = default;
  explicit ScriptEventOccupied(const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void generate_instances(const EventInstance& partial) override;

  [[nodiscard]] bool is_armed() const override;
  [[nodiscard]] bool is_settled() const override;
  [[nodiscard]] bool sleeps() const override;
  [[nodiscard]] bool is_awake() const override { return awake_; }
  void arm() override;
  void disarm() override;
  [[nodiscard]] Glib::ustring asleep_because() const override;

  // Each of these arms the line and makes the script evaluate its conditions.
  void choose_any();
  void choose_this();
  void choose(Block* chosen);
  void choose_occupied(bool on);

  [[nodiscard]] Block* get_block() const { return block; }
  [[nodiscard]] bool get_any() const { return any; }
  [[nodiscard]] bool get_occupied() const { return occupied; }

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] std::vector<ScriptChoice> block_choices();
  void set_subject(Block* chosen, bool is_any);
  void follow();
  void announce(unsigned arg);
  void fire();
  void test(Block* tested) const;

  ScopedConnection occupied_changed_;
  ScopedConnection lok_changed_;
  ScopedConnection ended_;  // connected also while the condition sleeps
  bool awake_ = false;
  bool occupied = true;
  bool any = true;
  Block* block = nullptr;
};

}  // namespace zemblar

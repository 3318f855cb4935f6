#pragma once

#include <compare>
#include <functional>
#include <memory>

#include "scripts/script_line.h"

namespace zemblar {

class Block;
class Lok;
class Script;
class generator;

/// What a condition has found to hold: in which block, and for which locomotive. A value to compare
/// with others: the objects may have ended.
struct EventInstance {
  Block* block = nullptr;
  Lok* lok = nullptr;

  bool operator==(const EventInstance&) const = default;
  /// By the addresses, block first.
  bool operator<(const EventInstance& other) const {
    const std::less<const void*> before;
    if (block != other.block) return before(block, other.block);
    return before(lok, other.lok);
  }
};

/// A condition of a script.
///
/// It has two sides. `generate_instances` says for what it holds now, whoever asks. And it watches
/// the railway: when something changes it fires `triggered`, and the script looks at all of its
/// conditions afresh. A condition watches nothing until it is armed, which a person does by
/// choosing its subject; one that is read from a file sleeps.
class ScriptEvent : public ScriptLine {
 public:
  /// Whether this condition opens a new alternative: "Or", where it is not the first one.
  [[nodiscard]] bool get_or_flag() const { return or_flag_; }
  /// Does not evaluate the script.
  void set_or_flag(bool on);

  /// Yields every instance that satisfies the condition, given what the lines before it have found.
  /// Runs in a generator; `yield` hands out each of them.
  virtual void generate_instances(const EventInstance& partial) = 0;

  /// False when changes of what it names go unnoticed, and when it can never hold.
  [[nodiscard]] virtual bool is_armed() const { return true; }
  /// False while what it names is ending, which leaves it with another subject.
  [[nodiscard]] virtual bool is_settled() const { return true; }
  /// Whether `arm` would arm it.
  [[nodiscard]] virtual bool sleeps() const { return false; }
  /// Whether somebody has armed it, though it may have nothing to watch by now.
  [[nodiscard]] virtual bool is_awake() const { return false; }
  /// Watches what it names: the same as choosing its present subject again in its menu.
  virtual void arm() {}
  /// Watches nothing until it is armed again.
  virtual void disarm() {}
  /// A sentence for a person; empty when it is armed.
  [[nodiscard]] virtual Glib::ustring asleep_because() const { return {}; }

  /// What it watches has changed.
  sigc::signal<void>& signal_triggered() { return signal_triggered_; }
  sigc::signal<void>& signal_or_changed() { return signal_or_changed_; }

 protected:
  /// In `generate_instances` only.
  static void yield(const EventInstance& instance);
  /// Whether nothing stands before it in its alternative.
  [[nodiscard]] bool opens_alternative() const;

 private:
  friend class Script;
  friend class InstanceWalk;

  bool or_flag_ = false;
  const Script* script_ = nullptr;  // that has it among its conditions
  sigc::signal<void> signal_triggered_;
  sigc::signal<void> signal_or_changed_;
};

/// The instances that a condition yields, one after the other; always walk to the end.
class InstanceWalk {
 public:
  InstanceWalk(ScriptEvent& event, const EventInstance& partial);
  ~InstanceWalk();
  InstanceWalk(const InstanceWalk&) = delete;
  InstanceWalk& operator=(const InstanceWalk&) = delete;

  /// The next one; null at the end. It stays until the next call.
  const EventInstance* next();

 private:
  friend class ScriptEvent;

  generator* generator_;
  EventInstance instance_;
};

}  // namespace zemblar

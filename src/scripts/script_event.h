#pragma once

#include <array>
#include <compare>
#include <functional>
#include <memory>

#include "runtime/timer.h"
#include "scripts/script_line.h"

namespace zemblar {

class Block;
class Lok;
class Script;
class generator;

/// A block and a locomotive for which a condition holds. Only a value to compare: the objects may
/// have ended.
struct EventInstance {
  Block* block = nullptr;
  Lok* lok = nullptr;

  bool operator==(const EventInstance&) const = default;
  /// Orders by memory address, block first.
  bool operator<(const EventInstance& other) const {
    const std::less<const void*> before;
    if (block != other.block) return before(block, other.block);
    return before(lok, other.lok);
  }
};

/// A condition of a script.
///
/// It has two tasks. `generate_instances` yields the instances for which it holds now. And it
/// watches the railway: when something changes it emits `signal_triggered`, and the script
/// evaluates all of its conditions. A condition watches nothing until it is armed, which the user
/// does by choosing its subject. A condition read from a file sleeps, that is, it is not armed.
class ScriptEvent : public ScriptLine {
 public:
  /// True if the condition opens a new alternative ("Or"), unless it is the first one.
  [[nodiscard]] bool get_or_flag() const { return or_flag_; }
  /// Does not evaluate the script.
  void set_or_flag(bool on);

  /// Calls `yield` for every instance that satisfies the condition, given `partial`, the instance
  /// that the lines before it have found. Runs in a generator.
  virtual void generate_instances(const EventInstance& partial) = 0;

  /// False while the condition does not watch its subject, and if it can never hold.
  [[nodiscard]] virtual bool is_armed() const { return true; }
  /// False while its subject is ending, after which the condition has another one.
  [[nodiscard]] virtual bool is_settled() const { return true; }
  /// True if the condition is not armed and `arm` would arm it.
  [[nodiscard]] virtual bool sleeps() const { return false; }
  /// True if the condition was armed, even if it has nothing to watch now.
  [[nodiscard]] virtual bool is_awake() const { return false; }
  /// Watches its subject, as if the user chose the present subject again in the menu.
  virtual void arm() {}
  /// Stops watching.
  virtual void disarm() {}
  /// A sentence for the user why the condition is not armed; empty when it is.
  [[nodiscard]] virtual Glib::ustring asleep_because() const { return {}; }

  /// The watched subject has changed.
  sigc::signal<void>& signal_triggered() { return signal_triggered_; }
  sigc::signal<void>& signal_or_changed() { return signal_or_changed_; }

 protected:
  /// Call in `generate_instances` only.
  static void yield(const EventInstance& instance);
  /// The owner; null before the line is added.
  [[nodiscard]] Script* script() const { return script_; }
  /// True if the condition is the first of its alternative.
  [[nodiscard]] bool opens_alternative() const;
  /// What the condition is about has changed, perhaps by a script. Triggers it; a change within a
  /// ScriptTurn does so after Script::round_delay.
  void trigger();
  /// Forgets a change that has not triggered the condition yet.
  void cancel_trigger() { later_.cancel(); }

 private:
  friend class Script;
  friend class InstanceWalk;

  bool or_flag_ = false;
  Script* script_ = nullptr;
  sigc::signal<void> signal_triggered_;
  sigc::signal<void> signal_or_changed_;
  Timeout later_;
};

/// Iterates over the instances that a condition yields. Always call `next` until it returns null.
///
/// The condition runs ahead by a few instances, since a switch to its generator and back costs more
/// than most of them.
class InstanceWalk {
 public:
  InstanceWalk(ScriptEvent& event, const EventInstance& partial);
  ~InstanceWalk();
  InstanceWalk(const InstanceWalk&) = delete;
  InstanceWalk& operator=(const InstanceWalk&) = delete;

  /// The next instance, valid until the next call; null at the end.
  const EventInstance* next();

 private:
  friend class ScriptEvent;

  generator* generator_;
  std::array<EventInstance, 16> found_;
  std::size_t count_ = 0;  // of those in `found_`
  std::size_t next_ = 0;
};

}  // namespace zemblar

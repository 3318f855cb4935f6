#pragma once

#include <array>
#include <chrono>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "core/object.h"
#include "core/status.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "scripts/script_command.h"
#include "scripts/script_event.h"

namespace zemblar {

struct ScriptContext;

/// Reacts to the state of the railway: a list of conditions and a list of commands.
///
/// Whenever a condition reports a change, the script finds all instances for which its conditions
/// hold. Conditions joined by "And" extend one alternative; "Or" opens the next. Instances that no
/// longer hold are announced as finished. Then each new instance starts one run of the commands, on
/// a fiber of its own. For an instance that still holds, nothing happens.
///
/// In "When" mode commands change the railway permanently. In "While" mode their changes go to a
/// ScriptOverlay, which is taken back when the instance has finished. Deleting the script, and any
/// edit of its commands, cancels all runs: each stops after its present command, at once if that
/// command waits.
///
/// A line can be switched off. Switching a condition off or on starts no run, but finishes the
/// instances that no longer hold, and in "While" mode ends their runs. An alternative whose
/// conditions are all off never holds.
///
/// A change during a BlockControlTurn is evaluated after the turn; a change caused by an
/// evaluation, after that evaluation. A script does nothing if it is not in the current layout, or
/// if that is being emptied.
///
/// Runs are not in a layout file.
class Script : public Object {
 public:
  Script();
  /// Skips entries of unknown lines. Throws YAML::KeyNotFound for a line with too few elements,
  /// YAML::InvalidScalar for an element that is no scalar or has an impossible value.
  explicit Script(const YAML::Node& node);
  ~Script() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// False: "When". True: "While".
  [[nodiscard]] bool get_while() const { return while_mode; }
  void set_while(bool on);

  // The lists own their lines. An index past the end is ignored; `get_...` returns null for it.
  // `find_...` returns -1 for a line of another list. Editing conditions starts no runs.
  unsigned add_condition(ScriptEvent* line);
  void remove_condition(unsigned index);
  void move_condition(unsigned from, unsigned to);
  [[nodiscard]] unsigned get_num_conditions() const;
  [[nodiscard]] ScriptEvent* get_condition(unsigned index) const;
  [[nodiscard]] int find_condition(const ScriptEvent* line) const;

  unsigned add_command(ScriptCommand* line);
  void remove_command(unsigned index);
  void move_command(unsigned from, unsigned to);
  [[nodiscard]] unsigned get_num_commands() const;
  [[nodiscard]] ScriptCommand* get_command(unsigned index) const;
  [[nodiscard]] int find_command(const ScriptCommand* line) const;

  /// Adds the lines of an entry: conditions before the line `before` if that is a condition,
  /// commands if it is a command, else at the end. With `wake`, and unless the script sleeps, the
  /// conditions are armed when their references have been resolved. The words "When" and "While"
  /// set the mode of a script without conditions, and stand for "Or" in another one. Returns the
  /// first line added; null if the entry has none. Throws as the constructor does, and also for
  /// unknown lines, and adds nothing then.
  ScriptLine* insert_lines(const YAML::Node& entry, const ScriptLine* before, bool wake = true);
  /// Writes all lines as the constructor reads them, or only one.
  void save_lines(YAML::Emitter& out, const ScriptLine* only = nullptr) const;
  /// Switches a line of this script off or on.
  void set_off(ScriptLine& line, bool off);
  /// True if there are conditions, and all of them are switched off.
  [[nodiscard]] bool has_only_off_conditions() const;
  /// True if no condition of the alternative stands before this one, apart from some that are
  /// switched off.
  [[nodiscard]] bool opens_alternative(const ScriptEvent& line) const;

  /// Claims a name for a line. False for type 0, and if the name has another type already.
  bool add_variable(const Glib::ustring& name, int type);
  void remove_variable(const Glib::ustring& name);
  /// The names of one type, or all names for type 0, sorted.
  [[nodiscard]] std::vector<Glib::ustring> get_variables(int type) const;

  /// Arms every condition.
  void start();
  /// Disarms every condition, cancels all runs and forgets all instances, so that a later start
  /// begins anew.
  void stop();
  /// True if `start` would arm a condition.
  [[nodiscard]] bool sleeps() const;
  /// How long the script waits before it takes notice of what another script has just changed: no
  /// time, or a while if that happens again and again, which the status line says. Counts the
  /// calls.
  [[nodiscard]] std::chrono::milliseconds round_delay();
  /// Runs the commands once for an instance, whatever the conditions say. With "While" the changes
  /// are taken back after the last command. False, and nothing is done, if the script has just been
  /// started in this way and its run is still at a command that does not wait.
  bool run_once(const EventInstance& instance);
  /// A run that has not ended.
  struct Run {
    const ScriptContext* context = nullptr;
    const ScriptCommand* command = nullptr;  ///< the present one; null after the last one
  };
  [[nodiscard]] const std::list<Run>& runs() const { return *runs_; }
  [[nodiscard]] unsigned num_runs() const { return static_cast<unsigned>(runs_->size()); }
  /// A run has begun, has come to another command, or has ended. Handlers change nothing of the
  /// document.
  sigc::signal<void>& signal_runs_changed() { return runs_changed_; }
  /// True if the script has been started for this instance, which has held since then.
  [[nodiscard]] bool has_started_for(const EventInstance& instance) const {
    return instances.contains(instance);
  }

  sigc::signal<void>& signal_mode_changed() { return mode_changed_; }
  sigc::signal<void, unsigned>& signal_condition_added() { return condition_added_; }
  /// Emitted before the line is removed.
  sigc::signal<void, unsigned>& signal_condition_removed() { return condition_removed_; }
  sigc::signal<void, unsigned, unsigned>& signal_condition_moved() { return condition_moved_; }
  sigc::signal<void, unsigned>& signal_command_added() { return command_added_; }
  /// Emitted before the line is removed.
  sigc::signal<void, unsigned>& signal_command_removed() { return command_removed_; }
  sigc::signal<void, unsigned, unsigned>& signal_command_moved() { return command_moved_; }
  sigc::signal<void, const EventInstance&>& signal_instance_finished() {
    return instance_finished_;
  }
  /// Lines were added, removed or moved.
  sigc::signal<void>& signal_commands_changed() { return commands_changed_; }

 protected:
  void on_deleted() override;

 private:
  struct Variable {
    unsigned users = 1;
    int type = 0;
  };
  using Watches = std::array<ScopedConnection, 2>;

  [[nodiscard]] static std::unique_ptr<ScriptEvent> load_condition(const YAML::Node& entry);
  [[nodiscard]] std::unique_ptr<ScriptCommand> load_command(const YAML::Node& entry);
  void load_conditions(const YAML::Node& node);
  void load_commands(const YAML::Node& node);
  void restore_conditions(const YAML::Node& now, const YAML::Node& entry);
  void restore_commands(const YAML::Node& now, const YAML::Node& entry);
  void insert_condition(unsigned index, const YAML::Node& entry, bool arm);
  void restore_words(const YAML::Node& list);
  void restore_mode(const EntryChange& change);
  static void arm_when_resolved(ScriptEvent* line);
  void adopt(ScriptEvent* line, std::size_t place);
  void adopt(ScriptCommand* line, std::size_t place);
  void on_changing();
  void announce_commands_changed();
  /// True if the script is in the current layout and that is not being emptied.
  [[nodiscard]] bool is_in_use() const;

  // Finding instances and starting runs.
  void on_triggered();
  [[nodiscard]] bool is_settled() const;
  void on_line_changed();
  void evaluate();
  void finish_instances();
  void cancel_what_is_over();
  void sweep();
  [[nodiscard]] std::size_t next_in_alternative(std::size_t position, bool opens) const;
  void match(std::size_t position, const EventInstance& instance);
  void complete(const EventInstance& instance);
  [[nodiscard]] std::vector<EventInstance> take_finished();
  void on_ended(const EventInstance& instance);
  void run_instance(const EventInstance& instance, bool by_condition);

  std::vector<std::unique_ptr<ScriptEvent>> conditions;
  std::vector<std::unique_ptr<ScriptCommand>> commands;
  using Instances = std::map<EventInstance, bool>;
  Instances instances;  // that hold, each with the mark of the last sweep that found it
  std::map<std::string, Variable> variables;
  bool while_mode = false;

  sigc::signal<void> mode_changed_;
  sigc::signal<void, unsigned> condition_added_;
  sigc::signal<void, unsigned> condition_removed_;
  sigc::signal<void, unsigned, unsigned> condition_moved_;
  sigc::signal<void, unsigned> command_added_;
  sigc::signal<void, unsigned> command_removed_;
  sigc::signal<void, unsigned, unsigned> command_moved_;
  sigc::signal<void, const EventInstance&> instance_finished_;
  sigc::signal<void> commands_changed_;

  bool mark_ = false;       // the mark of the present sweep; alternates
  std::size_t marked_ = 0;  // number of instances that have `mark_`
  Instances::iterator expected_ = instances.end();
  unsigned rounds_ = 0;  // calls of `round_delay` within the present second
  Clock::time_point rounds_since_{};
  StatusNote circle_;
  Timeout circle_over_;
  bool evaluating_ = false;
  bool only_finishes_ = false;  // instances that come to hold are left to the next evaluation
  bool starting_ = false;       // within `run_once`
  bool again_ = false;
  bool waiting_ = false;    // an evaluation waits for the end of the BlockControlTurn
  bool unsettled_ = false;  // an evaluation waits for a line whose block is ending
  std::vector<EventInstance> to_start_;
  std::vector<EventInstance> departed_;  // instances whose objects have ended since the last sweep
  std::shared_ptr<std::list<Run>> runs_ = std::make_shared<std::list<Run>>();
  sigc::signal<void> runs_changed_;
  std::map<EventInstance, Watches> watches_;  // watch the ends of the objects in `instances`
};

/// Arms every condition of every script in the current layout.
void start_scripts();
/// Stops every script in the current layout.
void stop_scripts();
/// Number of scripts of the current layout that have a sleeping condition.
[[nodiscard]] unsigned sleeping_scripts();
/// The result of `sleeps` may have changed for some script.
sigc::signal<void>& signal_sleeping_changed();

}  // namespace zemblar

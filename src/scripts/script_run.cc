// Evaluation: from a change on the railway to a run of commands.

#include <algorithm>
#include <tuple>
#include <utility>

#include "core/alive_guard.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"
#include "scripts/script.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_context.h"
#include "scripts/script_turn.h"
#include "track/block.h"
#include "track/block_control_turn.h"

namespace zemblar {
namespace {

/// The entry of a run in the list of its script, while it exists. The script may end before it, so
/// the list is shared.
class RunEntry {
 public:
  RunEntry(std::shared_ptr<std::list<Script::Run>> list, const sigc::signal<void>& changed)
      : list_(std::move(list)), entry_(list_->emplace(list_->end())), changed_(changed) {}
  ~RunEntry() {
    list_->erase(entry_);
    changed_.emit();
  }
  RunEntry(const RunEntry&) = delete;
  RunEntry& operator=(const RunEntry&) = delete;

  void enter(const ScriptContext& context, const ScriptCommand* command) {
    *entry_ = {.context = &context, .command = command};
    changed_.emit();
  }

 private:
  std::shared_ptr<std::list<Script::Run>> list_;
  std::list<Script::Run>::iterator entry_;
  sigc::signal<void> changed_;  // a copy, since the script may be destroyed
};

/// How often in a second scripts may set off one script before it is slowed down.
constexpr unsigned most_rounds = 50;
constexpr std::chrono::seconds counting_time(1);
constexpr std::chrono::milliseconds slow_round(200);
constexpr std::chrono::seconds note_time(5);

}  // namespace

std::chrono::milliseconds Script::round_delay() {
  const auto now = Clock::now();
  if (now - rounds_since_ > counting_time) {
    rounds_ = 0;
    rounds_since_ = now;
  }
  if (++rounds_ <= most_rounds) return {};
  circle_.show(Glib::ustring::compose(
      _("%1 is set off again and again, perhaps by itself or another script: it is slowed down."),
      get_name()));
  circle_over_ = Timeout::once(note_time, [this] { circle_.clear(); });
  return slow_round;
}

bool Script::is_in_use() const {
  if (is_deleting() || !Layout::exists()) return false;
  const auto& layout = Layout::get();
  return of(g_node_get_root(gnode())) == &layout && !layout.is_emptying();
}

// --- What matches ---

void Script::on_triggered() {
  if (!BlockControlTurn::is_running()) return evaluate();
  if (std::exchange(waiting_, true)) return;
  BlockControlTurn::afterwards(sigc::track_obj(
      [this] {
        waiting_ = false;
        evaluate();
      },
      *this));
}

// False while the block of a condition is ending. Such a block triggers other conditions before its
// own condition has changed to "This Block".
bool Script::is_settled() const {
  return std::ranges::all_of(conditions, [](const auto& line) { return line->is_settled(); });
}

void Script::on_line_changed() {
  signal_sleeping_changed().emit();
  if (unsettled_ && is_settled()) evaluate();
}

// Handlers of finished instances and new runs change the railway, and so may call this again.
void Script::evaluate() {
  again_ = true;
  unsettled_ = !is_settled();
  if (evaluating_ || unsettled_) return;
  evaluating_ = true;
  const ScriptTurn turn;
  const AliveGuard alive(*this);
  while (again_ && !unsettled_ && is_in_use()) {
    again_ = false;
    sweep();
    if (!alive) return;
    only_finishes_ = false;
  }
  evaluating_ = false;
}

// An edit: what comes to hold by it starts with the next evaluation.
void Script::finish_instances() {
  if (evaluating_) return;
  const AliveGuard alive(*this);
  only_finishes_ = true;
  evaluate();
  if (alive) only_finishes_ = false;
}

// All instances that the last sweep found have its mark. Alternating the mark makes them unmarked
// for the next sweep.
void Script::sweep() {
  mark_ = !mark_;
  marked_ = 0;
  expected_ = instances.begin();
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    if (i != 0 && !conditions[i]->get_or_flag()) continue;
    const auto first = next_in_alternative(i, true);
    if (first < conditions.size()) match(first, {});
  }
  const auto finished = take_finished();
  const auto starting = std::exchange(to_start_, {});
  const AliveGuard alive(*this);
  const auto signal = instance_finished_;  // a copy, since this may be destroyed
  for (const auto& instance : finished) {
    signal.emit(instance);
    if (!alive) return;
  }
  for (const auto& instance : starting) {
    if (!is_in_use()) return;
    // A run that has just started may have ended this instance's objects.
    if (!instances.contains(instance)) continue;
    fiber::spawn([this, instance] { run_instance(instance, true); });
    if (!alive) return;
  }
}

// The first condition from `position` on that is not switched off; the number of conditions if the
// alternative has no more. `opens`: the alternative begins at `position`.
std::size_t Script::next_in_alternative(std::size_t position, bool opens) const {
  for (; position < conditions.size(); ++position, opens = false) {
    if (!opens && conditions[position]->get_or_flag()) break;
    if (!conditions[position]->is_off()) return position;
  }
  return conditions.size();
}

void Script::match(std::size_t position, const EventInstance& instance) {
  if (position == conditions.size()) return complete(instance);
  const auto next = next_in_alternative(position + 1, false);
  InstanceWalk walk(*conditions[position], instance);
  while (const auto* found = walk.next()) match(next, *found);
}

// Most instances are known and come in the order of the map, so `expected_` usually avoids a
// search.
void Script::complete(const EventInstance& instance) {
  auto entry = expected_;
  bool is_new = false;
  if (entry == instances.end() || entry->first != instance) {
    if (only_finishes_ && !instances.contains(instance)) return;
    std::tie(entry, is_new) = instances.try_emplace(instance, !mark_);
  }
  expected_ = std::next(entry);
  if (std::exchange(entry->second, mark_) != mark_) ++marked_;
  if (!is_new) return;
  to_start_.push_back(instance);
  const auto watch = [&](Object* object) -> ScopedConnection {
    if (!object) return {};
    return object->signal_deleted().connect([this, instance] { on_ended(instance); });
  };
  watches_[instance] = {watch(instance.block), watch(instance.lok)};
}

// Finishes the instance, because a new object may get the same memory address and would be taken
// for the old one.
void Script::on_ended(const EventInstance& instance) {
  const auto ended = instance;  // a copy, since erasing the watch destroys the argument
  departed_.push_back(ended);
  instances.erase(ended);
  watches_.erase(ended);
}

std::vector<EventInstance> Script::take_finished() {
  auto finished = std::exchange(departed_, {});
  if (marked_ == instances.size() && finished.empty()) return finished;
  for (auto entry = instances.begin(); entry != instances.end();) {
    if (entry->second == mark_) {
      ++entry;
      continue;
    }
    finished.push_back(entry->first);
    watches_.erase(entry->first);
    entry = instances.erase(entry);
  }
  std::ranges::sort(finished, std::less<>());
  return finished;
}

// --- Runs ---

bool Script::run_once(const EventInstance& instance) {
  if (starting_ || !is_in_use()) return false;
  const AliveGuard alive(*this);
  starting_ = true;
  fiber::spawn([this, instance] { run_instance(instance, false); });
  if (alive) starting_ = false;
  return true;
}

// The run is cancelled before the script or one of its lines ends; after that neither is used.
void Script::run_instance(const EventInstance& instance, bool by_condition) {
  RunEntry entry(runs_, runs_changed_);
  ScriptContext context(*this, instance);
  std::unique_ptr<ScriptCommand> last;
  if (while_mode) {
    context.push();
    if (by_condition) {
      context.follow_instance();
      last = std::make_unique<ScriptCommandWaitInitEvent>(*this);
    }
  }
  for (std::size_t i = 0; i < commands.size(); ++i) {
    if (commands[i]->is_off()) continue;
    entry.enter(context, commands[i].get());
    commands[i]->run(context);
    if (context.is_cancelled()) return;
  }
  entry.enter(context, nullptr);
  if (last) last->run(context);
}

}  // namespace zemblar

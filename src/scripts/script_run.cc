// From a change on the railway to a run of commands.

#include <algorithm>
#include <tuple>
#include <utility>

#include "core/alive_guard.h"
#include "core/layout.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"
#include "scripts/script.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_context.h"
#include "track/block.h"
#include "track/block_control_turn.h"

namespace zemblar {
namespace {

/// Counts a run while it lives; the script may end first.
class RunCount {
 public:
  explicit RunCount(std::shared_ptr<unsigned> count) : count_(std::move(count)) { ++*count_; }
  ~RunCount() { --*count_; }
  RunCount(const RunCount&) = delete;
  RunCount& operator=(const RunCount&) = delete;

 private:
  std::shared_ptr<unsigned> count_;
};

}  // namespace

bool Script::is_at_work() const {
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

// A block that ends frees others before it lets go of its own line, which is "This Block" then.
bool Script::is_settled() const {
  return std::ranges::all_of(conditions, [](const auto& line) { return line->is_settled(); });
}

void Script::on_line_changed() {
  signal_sleeping_changed().emit();
  if (unsettled_ && is_settled()) evaluate();
}

// Finish notices and new runs change the railway, and so may lead here again.
void Script::evaluate() {
  again_ = true;
  unsettled_ = !is_settled();
  if (evaluating_ || unsettled_) return;
  evaluating_ = true;
  const AliveGuard alive(*this);
  while (again_ && !unsettled_ && is_at_work()) {
    again_ = false;
    sweep();
    if (!alive) return;
  }
  evaluating_ = false;
}

// All that the last sweep has found carry its mark, which clears them for the next one.
void Script::sweep() {
  mark_ = !mark_;
  marked_ = 0;
  expected_ = instances.begin();
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    if (i == 0 || conditions[i]->get_or_flag()) match(i, {}, true);
  }
  const auto finished = take_finished();
  const auto starting = std::exchange(to_start_, {});
  const AliveGuard alive(*this);
  const auto signal = instance_finished_;  // outlives this
  for (const auto& instance : finished) {
    signal.emit(instance);
    if (!alive) return;
  }
  for (const auto& instance : starting) {
    if (!is_at_work()) return;
    // A run that has just begun may have ended what this one is for.
    if (!instances.contains(instance)) continue;
    fiber::spawn([this, instance] { run_instance(instance); });
    if (!alive) return;
  }
}

void Script::match(std::size_t position, const EventInstance& instance, bool first) {
  const bool opens_next = !first && position != 0 && position < conditions.size() &&
                          conditions[position]->get_or_flag();
  if (position == conditions.size() || opens_next) return complete(instance);
  InstanceWalk walk(*conditions[position], instance);
  while (const auto* found = walk.next()) match(position + 1, *found, false);
}

// Most instances were there before, and come in the order of the map.
void Script::complete(const EventInstance& instance) {
  auto entry = expected_;
  bool is_new = false;
  if (entry == instances.end() || entry->first != instance) {
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

// Another object may come to the same address: that is another instance, and this one is finished.
void Script::on_ended(const EventInstance& instance) {
  const auto ended = instance;  // the argument goes with its watch
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

// Whatever ends the script or a line of it cancels the run first; after that neither is looked at.
void Script::run_instance(const EventInstance& instance) {
  const RunCount count(runs_);
  ScriptContext context(*this, instance);
  std::unique_ptr<ScriptCommand> last;
  if (while_mode) {
    context.push();
    last = std::make_unique<ScriptCommandWaitInitEvent>(*this);
  }
  for (std::size_t i = 0; i < commands.size(); ++i) {
    commands[i]->run(context);
    if (context.is_cancelled()) return;
  }
  if (last) last->run(context);
}

}  // namespace zemblar

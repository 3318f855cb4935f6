#include "scripts/script_wait.h"

#include <memory>
#include <utility>

#include "runtime/fiber.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "scripts/script_context.h"
#include "scripts/script_turn.h"
#include "track/block_control_turn.h"

namespace zemblar {
namespace {

/// A wait in progress. Slots share it, so that one which is called too late finds `waiter` null.
struct Wait {
  std::function<bool()> holds;
  Script* script = nullptr;  // exists while `waiter` is set
  fiber* waiter = nullptr;
  bool is_queued = false;  // a look waits for the end of a turn of block control
  Timeout later{};         // a look waits for the end of a ScriptTurn
  std::vector<ScopedConnection> watches{};
  ScopedConnection cancelled{};
  ScopedConnection over{};
  Timeout limit{};
};

void end(const std::shared_ptr<Wait>& wait) {
  auto* const waiter = std::exchange(wait->waiter, nullptr);
  if (!waiter) return;
  wait->watches.clear();
  wait->cancelled.disconnect();
  wait->over.disconnect();
  wait->later.cancel();
  wait->limit.cancel();
  const ScriptTurn turn;
  fiber::resume(waiter, 0);
}

void look(const std::shared_ptr<Wait>& wait) {
  if (!wait->waiter || wait->is_queued || wait->later.armed()) return;
  if (BlockControlTurn::is_running()) {
    wait->is_queued = true;
    BlockControlTurn::afterwards([wait] {
      wait->is_queued = false;
      look(wait);
    });
  } else if (ScriptTurn::is_running()) {
    wait->later = Timeout::once(wait->script->round_delay(), [wait] { look(wait); });
  } else if (wait->holds()) {
    end(wait);
  }
}

}  // namespace

void wait_until(
    ScriptContext& context, const std::function<bool()>& holds,
    const std::function<std::vector<ScopedConnection>(const sigc::slot<void>&)>& connect,
    std::chrono::milliseconds limit) {
  if (context.is_cancelled() || holds()) return;
  if (context.is_over()) return context.cancellable->cancel();
  const auto wait = std::make_shared<Wait>();
  wait->script = context.script;
  wait->holds = [&context, &holds] { return context.is_cancelled() || holds(); };
  fiber::yield([&](fiber* waiter) {
    wait->waiter = waiter;
    wait->watches = connect([wait] { look(wait); });
    wait->cancelled = context.cancellable->signal_cancelled().connect([wait] { end(wait); });
    wait->over = context.signal_over().connect([wait, cancellable = context.cancellable] {
      if (wait->waiter) cancellable->cancel();
    });
    if (limit.count() > 0) wait->limit = Timeout::once(limit, [wait] { end(wait); });
  });
}

}  // namespace zemblar

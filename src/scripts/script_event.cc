#include "scripts/script_event.h"

#include <cassert>

#include "runtime/generator.h"
#include "scripts/script.h"
#include "scripts/script_turn.h"

namespace zemblar {
namespace {

InstanceWalk* walking = nullptr;  // the walk whose generator is running

}  // namespace

void ScriptEvent::set_or_flag(bool on) {
  if (on == or_flag_) return;
  signal_changing().emit();
  or_flag_ = on;
  signal_or_changed_.emit();
}

bool ScriptEvent::opens_alternative() const {
  return script_ && script_->opens_alternative(*this);
}

void ScriptEvent::trigger() {
  if (!ScriptTurn::is_running() || !script_) {
    later_.cancel();
    signal_triggered_.emit();
  } else if (!later_.armed()) {
    later_ = Timeout::once(script_->round_delay(), [this] { signal_triggered_.emit(); });
  }
}

// A generator passes only 32 bits, so the instance goes through the walk.
void ScriptEvent::yield(const EventInstance& instance) {
  assert(walking);
  walking->found_[walking->count_++] = instance;
  if (walking->count_ == walking->found_.size()) generator::yield(1);
}

InstanceWalk::InstanceWalk(ScriptEvent& event, const EventInstance& partial)
    : generator_(generator::create([&event, partial] { event.generate_instances(partial); })) {}

InstanceWalk::~InstanceWalk() {
  generator::destroy(generator_);
}

const EventInstance* InstanceWalk::next() {
  if (next_ < count_) return &found_[next_++];
  if (!generator_ || generator::finished(generator_)) return nullptr;
  count_ = 0;
  walking = this;
  generator::next(generator_, 0);
  walking = nullptr;
  next_ = 1;
  return count_ == 0 ? nullptr : &found_.front();
}

}  // namespace zemblar

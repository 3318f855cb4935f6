#include "edit/edit_list.h"

namespace zemblar {

void EditList::append(Steps& steps, std::unique_ptr<EditStep> step) {
  steps.push_back(std::move(step));
  while (steps.size() > capacity) steps.pop_front();
}

void EditList::record(std::unique_ptr<EditStep> step) {
  undone_.clear();
  auto* newest = done_.empty() ? nullptr : done_.back().get();
  auto* merged = newest ? newest->merge(*step) : nullptr;
  if (!merged) return append(done_, std::move(step));
  if (merged == newest) {
    if (merged->is_void()) done_.pop_back();
    return;
  }
  done_.back() = merged == step.get() ? std::move(step) : std::unique_ptr<EditStep>(merged);
}

bool EditList::undo() {
  if (!next_undo()) return false;
  auto step = std::move(done_.back());
  done_.pop_back();
  const bool undone = step->undo();
  if (undone) append(undone_, std::move(step));
  return undone;
}

bool EditList::redo() {
  if (!next_redo()) return false;
  auto step = std::move(undone_.back());
  undone_.pop_back();
  const bool redone = step->redo();
  if (redone) append(done_, std::move(step));
  return redone;
}

void EditList::clear() {
  done_.clear();
  undone_.clear();
}

const EditStep* EditList::next_undo() {
  while (!done_.empty() && !done_.back()->can_undo()) done_.pop_back();
  return done_.empty() ? nullptr : done_.back().get();
}

const EditStep* EditList::next_redo() {
  while (!undone_.empty() && !undone_.back()->can_redo()) undone_.pop_back();
  return undone_.empty() ? nullptr : undone_.back().get();
}

}  // namespace zemblar

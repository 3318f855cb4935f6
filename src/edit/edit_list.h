#pragma once

#include <deque>
#include <memory>

#include "edit/edit_step.h"

namespace zemblar {

/// The steps that can be undone, and those that have been undone and can be redone; 100 of each at
/// most. A new step empties the second list. Steps whose objects have ended elsewhere are dropped
/// when their turn comes.
class EditList {
 public:
  static constexpr std::size_t capacity = 100;

  /// May make one step of it and the newest one.
  void record(std::unique_ptr<EditStep> step);
  /// False when there is nothing to undo, or to redo.
  bool undo();
  bool redo();
  void clear();

  /// The step whose turn it is; null for none.
  [[nodiscard]] const EditStep* next_undo();
  [[nodiscard]] const EditStep* next_redo();

 private:
  using Steps = std::deque<std::unique_ptr<EditStep>>;

  static void append(Steps& steps, std::unique_ptr<EditStep> step);

  Steps done_;
  Steps undone_;
};

}  // namespace zemblar

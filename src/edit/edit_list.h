#pragma once

#include <deque>
#include <memory>

#include "edit/edit_step.h"

namespace zemblar {

/// The steps that can be undone, and the undone steps that can be redone; at most 100 of each. A
/// new step empties the second list. A step whose objects have ended otherwise is dropped when it
/// would be next.
class EditList {
 public:
  static constexpr std::size_t capacity = 100;

  /// Adds a new step. May merge the step into the newest one.
  void record(std::unique_ptr<EditStep> step);
  /// Undoes or redoes one step. False if there is none.
  bool undo();
  bool redo();
  void clear();

  /// The step that the next undo or redo would use, or null.
  [[nodiscard]] const EditStep* next_undo();
  [[nodiscard]] const EditStep* next_redo();

 private:
  using Steps = std::deque<std::unique_ptr<EditStep>>;

  static void append(Steps& steps, std::unique_ptr<EditStep> step);

  Steps done_;
  Steps undone_;
};

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>

#include <vector>

#include "edit/document_parts.h"

namespace zemblar {

/// One step of the user's work on the document, which can be undone and redone.
///
/// It holds the states before and after of each changed part. A part is an object that is directly
/// under a toplevel or has moved, with its whole entry, or a diagram object. Undo keeps changes
/// made otherwise since, except in the same key of the same entry.
class EditStep {
 public:
  struct Part {
    enum class Kind { object, drawing };
    Kind kind;
    unsigned number;
    PartState before;
    PartState after;
    bool moved = false;  ///< to another parent, or among its siblings
  };

  /// `parts` are in the order in which they were first changed.
  EditStep(PartNumbers& numbers, const Glib::ustring& name, std::vector<Part> parts)
      : numbers_(&numbers), name_(name), parts_(std::move(parts)) {}
  virtual ~EditStep() = default;

  /// The name of the step for a menu, such as "Add “Zone 1”".
  [[nodiscard]] const Glib::ustring& get_name() const { return name_; }
  [[nodiscard]] const std::vector<Part>& parts() const { return parts_; }

  /// Returns false and does nothing when a part of the step has ended otherwise.
  virtual bool undo();
  virtual bool redo();
  /// True if every part is the same before and after.
  [[nodiscard]] bool is_void() const;
  /// True if all parts needed for undo, or for redo, exist.
  [[nodiscard]] bool can_undo() const { return finds(&Part::after); }
  [[nodiscard]] bool can_redo() const { return finds(&Part::before); }

  /// Merges this step and `next`, which has just been done. Returns the resulting step: this one if
  /// it has absorbed `next`, or another one; null if the two stay separate. Changes of the same
  /// setting of one object are merged.
  [[nodiscard]] virtual EditStep* merge(EditStep& next);

 private:
  using State = PartState Part::*;

  [[nodiscard]] bool finds(State state) const;
  bool apply(State from, State to);
  void move_out(State from, State to) const;
  void end_parts(State from, State to) const;
  void restore_objects(State from, State to) const;
  void make_objects(const std::vector<const Part*>& order, State from, State to) const;
  void make_drawings(const std::vector<const Part*>& order, State from, State to) const;
  void replace_drawing(const Part& part, State to) const;

  PartNumbers* numbers_;
  Glib::ustring name_;
  std::vector<Part> parts_;
};

}  // namespace zemblar

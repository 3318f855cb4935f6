#pragma once

#include <glibmm/ustring.h>

#include <vector>

#include "edit/document_parts.h"

namespace zemblar {

/// One step of what somebody has done to the document, that can be undone and redone.
///
/// It holds how each part that was touched was before and is after: an object that stands under a
/// toplevel or has moved, with all that its entry says, or a diagram object. What was touched by
/// others meanwhile stays as they left it as far as it is not the same key of the same entry.
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

  /// The parts stand in the order in which they were touched first.
  EditStep(PartNumbers& numbers, const Glib::ustring& name, std::vector<Part> parts)
      : numbers_(&numbers), name_(name), parts_(std::move(parts)) {}
  virtual ~EditStep() = default;

  /// What was done, for a menu: "Add “Zone 1”".
  [[nodiscard]] const Glib::ustring& get_name() const { return name_; }
  [[nodiscard]] const std::vector<Part>& parts() const { return parts_; }

  /// False, with nothing done, when a part of it has ended elsewhere.
  virtual bool undo();
  virtual bool redo();
  /// Whether all of its parts are after it as they were before.
  [[nodiscard]] bool is_void() const;
  /// Whether undo, or redo, would find all of its parts.
  [[nodiscard]] bool can_undo() const { return finds(&Part::after); }
  [[nodiscard]] bool can_redo() const { return finds(&Part::before); }

  /// The step that stands for this one and `next`, which has just been done: this one itself when
  /// it has taken over `next`, another one, or null when both stay. Changes of the same setting of
  /// one object become one.
  [[nodiscard]] virtual EditStep* merge(EditStep& next);

 private:
  using State = PartState Part::*;

  [[nodiscard]] bool finds(State state) const;
  bool go(State from, State to);
  void take_out(State from, State to) const;
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

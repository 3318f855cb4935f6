#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "core/document_watcher.h"
#include "diagram/diagram_watcher.h"
#include "edit/edit_step.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Records what the user changes in the document, and makes undo steps of it.
///
/// The history of a window calls `begin` before each event of the window and `end` after it. All
/// changes in between, in any part of the document, belong to that window's step. Changes by trains
/// and devices at other times are not recorded. A Hold keeps a step open over several events, for
/// example while a new object follows the pointer. New and Open discard what was recorded, and all
/// steps.
class EditJournal : private DocumentWatcher, private DiagramWatcher {
 public:
  using Done = std::function<void(std::unique_ptr<EditStep>)>;

  static EditJournal& get();

  /// Starts recording. Calls nest: the outermost `end` passes the step to the outermost `done`, if
  /// anything has changed.
  void begin(const Done& done);
  void end();
  /// Makes a step of what has been recorded so far, and continues recording.
  void flush();
  /// Discards what has been recorded.
  void discard();
  [[nodiscard]] bool is_writing() const { return depth_ != 0; }
  void describe(const Glib::ustring& format) override { format_ = format; }

  [[nodiscard]] PartNumbers& numbers() { return numbers_; }
  /// The document has been replaced: no step can be undone any more.
  sigc::signal<void>& signal_forgotten() { return signal_forgotten_; }

  /// Keeps the step that is being recorded open, if there is one.
  class Hold {
   public:
    Hold() : holds_(get().is_writing()) {
      if (holds_) ++get().depth_;
    }
    ~Hold() {
      if (holds_) get().end();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    bool holds_;
  };

  /// While one exists, nothing is recorded.
  class Pause {
   public:
    Pause() { ++get().paused_; }
    ~Pause() { --get().paused_; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
  };

 private:
  struct Noted {
    EditStep::Part part;
    Glib::ustring name;
  };
  using Kind = EditStep::Part::Kind;

  EditJournal();

  void before_change(Object& object) override;
  void before_move(Object& object, Object& parent) override;
  void before_end(Object& object) override;
  void ended(const Object& object) override;
  void added(Object& object) override;
  void before_change(ViewObj& object) override;
  void before_move(ViewObj& object) override;
  void before_removal(ViewObj& object) override;
  void removed(ViewObj& object) override;
  void added(ViewObj& object) override;

  [[nodiscard]] bool is_noting() const { return depth_ != 0 && paused_ == 0 && !ignoring_; }
  Noted* find(Kind kind, unsigned number);
  Noted& note(Object& object);
  Noted& note(ViewObj& object);
  void note_place(const Noted& noted, unsigned place);
  [[nodiscard]] PartState state_of(Object& object);
  [[nodiscard]] PartState state_of(ViewObj& object);
  [[nodiscard]] PartState state_of(const EditStep::Part& part);
  [[nodiscard]] std::unique_ptr<EditStep> take_step();
  [[nodiscard]] Glib::ustring name_for(const std::vector<Noted>& changed) const;
  void forget();

  PartNumbers numbers_;
  unsigned depth_ = 0;
  unsigned paused_ = 0;
  bool ignoring_ = false;  // the document was replaced: records nothing until the outermost `end`
  Done done_;
  Glib::ustring format_;
  std::vector<Noted> noted_;
  sigc::signal<void> signal_forgotten_;
  ScopedConnection replaced_;
};

}  // namespace zemblar

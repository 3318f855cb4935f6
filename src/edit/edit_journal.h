#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "core/document_watcher.h"
#include "diagram/diagram_watcher.h"
#include "edit/edit_step.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Writes down what happens to the document while somebody works on it, and makes steps of it.
///
/// Whoever serves the events of a window begins before each of them and ends after it: what changes
/// meanwhile, in whatever part of the document, was done there. What trains and devices do at other
/// times is nobody's step. A step may be held open over several events, as while something new
/// follows the pointer. New and Open end what was begun, and all steps.
class EditJournal : private DocumentWatcher, private DiagramWatcher {
 public:
  using Done = std::function<void(std::unique_ptr<EditStep>)>;

  static EditJournal& get();

  /// From now on changes are written down, unless they are already; `done` is given the step when
  /// all who began have ended, if anything has changed.
  void begin(const Done& done);
  void end();
  /// Makes a step of what has been written down so far, and goes on.
  void flush();
  /// What has been written down is nobody's step.
  void discard();
  [[nodiscard]] bool is_writing() const { return depth_ != 0; }
  void describe(const Glib::ustring& format) override { format_ = format; }

  [[nodiscard]] PartNumbers& numbers() { return numbers_; }
  /// The document is another one: no step can be undone any more.
  sigc::signal<void>& signal_forgotten() { return signal_forgotten_; }

  /// Keeps the step open that is being written down, if there is one.
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

  /// While it lives, nothing is written down.
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

  [[nodiscard]] bool is_noting() const { return depth_ != 0 && paused_ == 0 && !forgotten_; }
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
  bool forgotten_ = false;  // what was begun
  Done done_;
  Glib::ustring format_;
  std::vector<Noted> noted_;
  sigc::signal<void> signal_forgotten_;
  ScopedConnection replaced_;
};

}  // namespace zemblar

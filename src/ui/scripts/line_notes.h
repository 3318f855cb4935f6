#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <map>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Script;
class ScriptLine;

/// What is shown beside a line while the script works.
struct LineNote {
  bool lamp = false;  ///< a run is at this line
  Glib::ustring text{};

  bool operator==(const LineNote&) const = default;
};

/// The notes of all lines of a script: where its runs are, and for whom; and if somebody asks why
/// it does not run, for which block and locomotive each condition holds now.
///
/// A run behind the last command of a "While" script is at the condition that keeps it. Call `stop`
/// before the script ends.
class LineNotes : public sigc::trackable {
 public:
  explicit LineNotes(Script& script);

  [[nodiscard]] bool get_asking() const { return asking_.connected(); }
  /// Answers for the conditions as well, from now on.
  void set_asking(bool on);
  void stop();

  [[nodiscard]] LineNote of(const ScriptLine* line) const;
  /// Some note has changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void look_soon();
  void look();
  void note_runs(std::map<const ScriptLine*, LineNote>& notes) const;
  void note_answers(std::map<const ScriptLine*, LineNote>& notes) const;

  Script* script_;  // null after `stop`
  std::map<const ScriptLine*, LineNote> notes_;
  sigc::signal<void> signal_changed_;
  ScopedConnection runs_changed_;
  ScopedConnection soon_;
  ScopedConnection asking_;
};

}  // namespace zemblar

#pragma once

#include <functional>
#include <vector>

#include "scripts/script_line.h"
#include "scripts/script_ui.h"
#include "ui/scripts/sentence.h"

namespace zemblar {

class Script;

/// What a row of a script's editor is for.
enum class ScriptRowType : int { line, add_condition, add_command };

/// One row of a script's editor: a line of the script, or the entry that adds one.
///
/// Its argument 0 is the word in front of a condition, and the whole text of an entry that adds.
/// The others are those of the line.
struct ScriptRow {
  static constexpr unsigned word = 0;

  ScriptRowType type = ScriptRowType::line;
  Script* script = nullptr;
  ScriptLine* line = nullptr;  ///< null in an entry that adds

  [[nodiscard]] Sentence sentence() const;
  /// With `replaced` in the place of one argument, which is being edited.
  [[nodiscard]] Sentence sentence(unsigned arg, const Glib::ustring& replaced) const;
  [[nodiscard]] Glib::ustring arg_text(unsigned arg) const;
  /// `plain` for what a person cannot change.
  [[nodiscard]] ScriptLine::ArgType arg_type(unsigned arg) const;
  /// The arguments that a person can change, in the order in which they are read.
  [[nodiscard]] std::vector<unsigned> editable_args() const;
  /// A condition that watches nothing, or can never hold: why, as a sentence. Empty otherwise.
  [[nodiscard]] Glib::ustring asleep_because() const;
  [[nodiscard]] bool sleeps() const;

  /// A new menu for an argument of type `menu`; owned by the caller. `added` hears of a line that
  /// was chosen to be added.
  [[nodiscard]] Gtk::Menu* make_menu(unsigned arg,
                                     const std::function<void(ScriptLine&)>& added) const;

 private:
  [[nodiscard]] Glib::ustring format() const;
  [[nodiscard]] Glib::ustring word_text() const;
  [[nodiscard]] bool is_first_condition() const;
  [[nodiscard]] std::vector<ScriptChoice> word_choices() const;
};

}  // namespace zemblar

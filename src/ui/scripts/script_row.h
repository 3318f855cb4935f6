#pragma once

#include <functional>
#include <vector>

#include "scripts/script_line.h"
#include "scripts/script_ui.h"
#include "ui/scripts/sentence.h"

namespace zemblar {

class Script;

/// The kind of a row in the script editor.
enum class ScriptRowType : int { line, add_condition, add_command };

/// One row of the script editor: a line of the script, or an entry that adds one.
///
/// Argument 0 is the word before a condition, or the whole text of an entry that adds a line. The
/// other arguments are those of the line.
struct ScriptRow {
  static constexpr unsigned word = 0;

  ScriptRowType type = ScriptRowType::line;
  Script* script = nullptr;
  ScriptLine* line = nullptr;  ///< null in an entry that adds a line

  [[nodiscard]] Sentence sentence() const;
  /// The sentence with `replaced` instead of one argument, which is being edited.
  [[nodiscard]] Sentence sentence(unsigned arg, const Glib::ustring& replaced) const;
  [[nodiscard]] Glib::ustring arg_text(unsigned arg) const;
  /// `plain` for an argument that the user cannot change.
  [[nodiscard]] ScriptLine::ArgType arg_type(unsigned arg) const;
  /// The arguments that the user can change, in reading order.
  [[nodiscard]] std::vector<unsigned> editable_args() const;
  /// A sentence why the line does nothing: it is switched off, or a condition that is not armed.
  /// Empty for other rows.
  [[nodiscard]] Glib::ustring asleep_because() const;
  [[nodiscard]] bool sleeps() const;
  [[nodiscard]] bool is_off() const { return line && line->is_off(); }

  /// A new menu for an argument of type `menu`, owned by the caller. `added` is called with a line
  /// that the user has added.
  [[nodiscard]] Gtk::Menu* make_menu(unsigned arg,
                                     const std::function<void(ScriptLine&)>& added) const;

 private:
  [[nodiscard]] Glib::ustring format() const;
  [[nodiscard]] Glib::ustring word_text() const;
  [[nodiscard]] bool is_first_condition() const;
  [[nodiscard]] std::vector<ScriptChoice> word_choices() const;
};

}  // namespace zemblar

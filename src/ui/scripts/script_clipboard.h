#pragma once

#include <glibmm/ustring.h>
#include <sigc++/trackable.h>

#include <functional>
#include <memory>

#include "edit/edit_journal.h"

namespace zemblar {

class Script;
class ScriptLine;

/// Puts a line, or with null the whole script, on the clipboard: the sentences for people, and the
/// text of copy_script.
void copy_to_clipboard(Script& script, const ScriptLine* only);

/// Asks for the text on the clipboard.
class ClipboardReader : public sigc::trackable {
 public:
  /// Calls `take` with the text, perhaps later: another program may have it. What `take` changes
  /// belongs to the present step of undo. Does nothing while an answer is awaited.
  void ask(std::function<void(const Glib::ustring&)> take);

 private:
  void on_text(const Glib::ustring& text);

  std::function<void(const Glib::ustring&)> take_;
  std::unique_ptr<EditJournal::Hold> waiting_;
};

}  // namespace zemblar

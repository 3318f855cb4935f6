#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class Script;
class ScriptLine;

/// Scripts and their lines as text, for the clipboard: a document like a layout file, in which
/// references are names, so that it can be read by people and in another layout. See NamedForm.

/// One line, or with null the whole script.
[[nodiscard]] Glib::ustring copy_script(const Script& script, const ScriptLine* only);
/// Adds the lines that the text has, see Script::insert_lines. They sleep, unless this program has
/// copied them last. Returns the first one. When the text
/// has none, or cannot be read, adds nothing, says so in the status line, and returns null. Also
/// says which objects the current layout does not have.
ScriptLine* paste_lines(Script& script, const Glib::ustring& text, const ScriptLine* before);
/// The same as a new script of the current layout, which sleeps.
Script* paste_script(const Glib::ustring& text);

}  // namespace zemblar

#pragma once

#include <glib.h>
#include <glibmm/ustring.h>
#include <libintl.h>

#include <string>

/// Translates a text that the user reads.
#define _(text) dgettext(GETTEXT_PACKAGE, text)
/// Translates a text that needs a context, because the same English text means something else
/// elsewhere.
#define C_(context, text) g_dpgettext2(GETTEXT_PACKAGE, context, text)
/// Marks a text that is translated later, where it is shown.
#define N_(text) text

namespace zemblar {

/// Selects the user's language for all texts, as UTF-8 whatever the locale's encoding is. Call it
/// first in a process.
void set_up_language();

/// Foreign bytes as text to display. Invalid UTF-8 is replaced, since the toolkit can neither
/// compose nor show it.
[[nodiscard]] Glib::ustring readable(const std::string& bytes);

}  // namespace zemblar

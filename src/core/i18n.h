#pragma once

#include <glib.h>
#include <glibmm/ustring.h>
#include <libintl.h>

#include <string>

/// Text that a person reads goes through the message catalogue.
#define _(text) dgettext(GETTEXT_PACKAGE, text)
/// The same for a text that means something else elsewhere.
#define C_(context, text) g_dpgettext2(GETTEXT_PACKAGE, context, text)
/// Marks a text that is translated later, where it is shown.
#define N_(text) text

namespace zemblar {

/// Has texts come in the language of the user, as UTF-8 whatever the locale's encoding is. First in
/// a process.
void set_up_language();

/// Bytes of foreign origin as text for a person: what is no UTF-8 is replaced, since the toolkit
/// neither composes it nor shows it.
[[nodiscard]] Glib::ustring readable(const std::string& bytes);

}  // namespace zemblar

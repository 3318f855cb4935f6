#pragma once

#include <libintl.h>

/// Text that a person reads goes through the message catalogue.
#define _(text) dgettext(GETTEXT_PACKAGE, text)
/// Marks a text that is translated later, where it is shown.
#define N_(text) text

#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class Object;

/// Gives an object the name that a person has typed in a list. A name that a sibling has is refused
/// with a word in the status line.
void rename_by_hand(Object& object, const Glib::ustring& name);

/// Says in the status line why a name is refused. The text goes when a name is accepted next, of
/// whatever object, unless another text has replaced it.
void refuse_name(const Glib::ustring& complaint);
void accept_name();

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class Object;

/// Sets the name that the user has typed in a list. A name that a sibling has is refused, with a
/// text in the status line.
void rename_by_hand(Object& object, const Glib::ustring& name);

/// `refuse_name` shows in the status line why a name is refused. `accept_name`, called for the next
/// accepted name of any object, clears that text if it is still shown.
void refuse_name(const Glib::ustring& complaint);
void accept_name();

}  // namespace zemblar

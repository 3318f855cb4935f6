#pragma once

#include <gtkmm/stockid.h>

namespace zemblar {

class Object;

/// The stock item with the icon of an object in lists. It depends on the class; for a device also
/// on whether it is in service, for a script on whether it is at work. A class without an icon of
/// its own has that of a plain file.
Gtk::StockID object_icon(const Object& object);

}  // namespace zemblar

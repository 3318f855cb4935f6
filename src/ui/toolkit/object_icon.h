#pragma once

#include <gtkmm/stockid.h>

namespace zemblar {

class Object;

/// The stock item whose icon stands for the object in lists: one for each kind, and for a device
/// whether it is in service. A class without an icon of its own has that of a plain file.
Gtk::StockID object_icon(const Object& object);

}  // namespace zemblar

#pragma once

#include <gtkmm/sizegroup.h>
#include <gtkmm/widget.h>

#include <memory>

#include "core/object.h"

namespace zemblar::test {

/// The properties panel of an object, as the track editor shows it.
inline std::unique_ptr<Gtk::Widget> panel_of(zemblar::Object& object) {
  return std::unique_ptr<Gtk::Widget>(
      object.make_properties_panel(Gtk::SizeGroup::create(Gtk::SIZE_GROUP_HORIZONTAL)));
}

}  // namespace zemblar::test

#pragma once

#include <gtkmm/label.h>
#include <gtkmm/sizegroup.h>
#include <gtkmm/table.h>

#include "core/layout.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

/// The panel of the layout: its title.
class LayoutProperties : public Gtk::Table {
 public:
  LayoutProperties(Layout& layout, const Glib::RefPtr<Gtk::SizeGroup>& labels);

 private:
  Gtk::Label label_;
  NameEntry title_;
  ScopedConnection emptied_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/table.h>

#include "core/panel_factory.h"
#include "ui/name_entry.h"

namespace zemblar {

class ECoS;

/// The panel of an ECoS command station.
class ECoSProperties : public Gtk::Table {
 public:
  ECoSProperties(ECoS& ecos, const Glib::RefPtr<Gtk::SizeGroup>& labels);

 private:
  NameEntry name_;
  Gtk::Entry host_;
  Gtk::CheckButton use_as_default_;
};

}  // namespace zemblar

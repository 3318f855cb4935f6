#pragma once

#include <gtkmm/button.h>

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class Script;

/// The panel of a script: buttons to open its editor and to start its sleeping conditions.
class SProps : public Form {
 public:
  SProps(Script& script, const Labels& labels);

 private:
  void follow();

  ObjectRef<Script> script_;
  NameEntry name_;
  Gtk::Button edit_;
  Gtk::Button copy_;
  Gtk::Button start_;
  ScopedConnection sleeping_changed_;
};

}  // namespace zemblar

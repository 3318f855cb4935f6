#pragma once

#include <gtkmm/button.h>

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class Script;

/// The panel of a script: opens its editor, and wakes what sleeps in it.
class SProps : public Form {
 public:
  SProps(Script& script, const Labels& labels);

 private:
  void follow();

  ObjectRef<Script> script_;
  NameEntry name_;
  Gtk::Button edit_;
  Gtk::Button start_;
  ScopedConnection sleeping_changed_;
};

}  // namespace zemblar

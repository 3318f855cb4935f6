#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/spinbutton.h>

#include "locomotives/function.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/image_button.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

/// The panel of a locomotive's function.
///
/// It offers the types Toggle and Pulse. For a function with another type, read from a file, it
/// offers that as well, and keeps it until the user chooses another.
class FunctionProperties : public Form {
 public:
  FunctionProperties(Function& function, const Labels& labels);

  [[nodiscard]] Gtk::ComboBoxText& type() { return type_; }
  [[nodiscard]] Gtk::ComboBoxText& decoder() { return decoder_; }

 private:
  void add_rows();
  void connect();
  void follow();
  void follow_type();
  void follow_decoders();
  void show_decoders();

  ObjectRef<Function> function_;
  bool updating_ = false;
  NameEntry name_;
  Gtk::ComboBoxText type_;
  std::vector<Function::Type> types_;
  Gtk::ComboBoxText decoder_;
  Gtk::SpinButton number_;
  Gtk::CheckButton hidden_;
  ImageButton off_image_;
  ImageButton on_image_;
  std::vector<ScopedConnection> connections_;
  std::vector<ScopedConnection> decoders_changed_;
};

}  // namespace zemblar

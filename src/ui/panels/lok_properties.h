#pragma once

#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/label.h>
#include <gtkmm/spinbutton.h>

#include <memory>
#include <vector>

#include "ui/panels/lok_place.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class DecoderForm;
class Lok;
class Decoder;

/// The panel of a locomotive: name, decoders, top speed, attributes, functions.
class LokProperties : public Form {
 public:
  LokProperties(Lok& lok, const Labels& labels);
  ~LokProperties() override;

 private:
  void add_decoders();
  void show_decoders();
  void add_decoder(unsigned index);
  void remove_decoder(const Glib::RefPtr<Decoder>& decoder);
  void add_top_speed();
  void add_place();

  ObjectRef<Lok> lok_;
  bool updating_ = false;
  NameEntry name_;
  Gtk::VBox decoders_;
  std::vector<std::unique_ptr<DecoderForm>> decoder_forms_;
  Gtk::Button new_decoder_;
  Gtk::SpinButton top_speed_;
  Gtk::CheckButton brake_;
  LokPlace place_;
  ScopedConnection decoders_changed_;
  ScopedConnection top_speed_changed_;
  ScopedConnection show_decoders_soon_;
};

}  // namespace zemblar

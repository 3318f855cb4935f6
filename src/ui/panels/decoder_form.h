#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/spinbutton.h>

#include <memory>

#include "locomotives/decoder.h"
#include "ui/toolkit/addr_spin.h"
#include "ui/toolkit/address_note.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/object_button.h"

namespace zemblar {

/// The part of a locomotive's panel that edits one of its decoders.
class DecoderForm : public Form {
 public:
  DecoderForm(const Glib::RefPtr<Decoder>& decoder, const Glib::ustring& heading,
              const Labels& labels);

  [[nodiscard]] const Glib::RefPtr<Decoder>& decoder() const { return decoder_; }
  [[nodiscard]] Gtk::SpinButton& ratio() { return ratio_; }

 private:
  void add_rows(const Glib::ustring& heading);
  void connect();
  void follow();

  Glib::RefPtr<Decoder> decoder_;
  bool updating_ = false;
  Gtk::ComboBoxText type_;
  AddrSpin address_{Address::Kind::mobile};
  Gtk::CheckButton long_;
  std::unique_ptr<AddressNote> note_;
  ObjectButton device_;
  Gtk::CheckButton enabled_;
  Gtk::SpinButton ratio_;
  Gtk::CheckButton reverse_;
};

}  // namespace zemblar

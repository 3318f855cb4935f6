#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/spinbutton.h>

#include <memory>

#include "track/point_output.h"
#include "ui/toolkit/addr_spin.h"
#include "ui/toolkit/address_note.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/object_button.h"

namespace zemblar {

/// The part of a point's panel that edits one of its outputs. The type decides which rows are
/// shown.
class PointOutputProperties : public Form {
 public:
  PointOutputProperties(const Glib::RefPtr<PointOutput>& output, const Glib::ustring& heading,
                        const Labels& labels);

  [[nodiscard]] const Glib::RefPtr<PointOutput>& output() const { return output_; }

 private:
  void add_rows(const Glib::ustring& heading);
  void connect();
  void follow();
  void follow_address();

  Glib::RefPtr<PointOutput> output_;
  bool updating_ = false;
  Gtk::ComboBoxText type_;
  ObjectButton device_;
  AddrSpin address_{Address::Kind::accessory};
  Gtk::CheckButton long_;
  std::unique_ptr<AddressNote> note_;
  Gtk::SpinButton number_;
  Gtk::SpinButton function_;
};

/// A description of an output, such as "Address 5, output 1".
[[nodiscard]] Glib::ustring output_text(const PointOutput& output);

}  // namespace zemblar

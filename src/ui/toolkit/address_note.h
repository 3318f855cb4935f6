#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include <functional>
#include <vector>

#include "core/address.h"
#include "ui/toolkit/layout_follower.h"

namespace zemblar {

class Form;

/// A row under the field of an address: the other objects that have it, and a button that takes the
/// next free one. The row is hidden while the address is nobody else's.
class AddressNote : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  struct Source {
    Gtk::Widget& field;
    std::function<Address()> address;
    std::function<std::vector<Object*>()> others;
    std::function<void()> take_next_free;
  };

  /// The note adds itself to the form, which outlives it.
  AddressNote(Form& form, Source source);

  /// The address has changed. Changes of others are seen with the next pulse of the layout.
  void refresh();

 private:
  Form& form_;
  Source source_;
  Gtk::Label text_;
  Gtk::Button next_;
  LayoutFollower pulse_;
};

}  // namespace zemblar

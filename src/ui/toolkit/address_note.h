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

/// A row below the field of an address: the other objects that have the same address, and a button
/// that sets the next free one. The row is hidden while no other object has the address.
class AddressNote : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  struct Source {
    Gtk::Widget& field;
    std::function<Address()> address;
    std::function<std::vector<Object*>()> others;
    std::function<void()> take_next_free;
  };

  /// Adds the note to the form, which must outlive it.
  AddressNote(Form& form, Source source);

  /// Call when the address has changed. Changes of other objects' addresses are noticed at the next
  /// pulse of the layout.
  void refresh();

 private:
  Form& form_;
  Source source_;
  Gtk::Label text_;
  Gtk::Button next_;
  LayoutFollower pulse_;
};

}  // namespace zemblar

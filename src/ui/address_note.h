#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include <functional>
#include <vector>

#include "core/address.h"
#include "ui/layout_follower.h"

namespace zemblar {

class Form;

/// Says under the field of an address who else has it, with a button that takes the next free one.
/// The row is not there while nobody else does.
class AddressNote : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  struct Source {
    std::function<Address()> address;
    std::function<std::vector<Object*>()> others;
    std::function<void()> take_next_free;
  };

  /// Adds itself to the form, which it stands in.
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

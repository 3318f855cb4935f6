#pragma once

#include <gtkmm/button.h>

#include <memory>

#include "ui/toolkit/form.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

/// Adds a button over the whole width that puts a new Child into `container` and announces it by
/// `signal_object_made`, so that it gets selected.
template <typename Child>
void add_new_button(Form& form, const Glib::ustring& text, zemblar::Object& container) {
  auto* button = Gtk::manage(new Gtk::Button(text, true));
  const auto parent = std::make_shared<ObjectRef<zemblar::Object>>(&container);
  button->signal_clicked().connect([parent] {
    if (*parent) signal_object_made().emit(*(*parent)->add(new Child));
  });
  form.add_wide(*button);
}

}  // namespace zemblar

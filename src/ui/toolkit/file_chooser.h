#pragma once

#include <gtkmm/filechooserdialog.h>

#include "ui/toolkit/menu_owner.h"

namespace zemblar {

/// A file chooser that closes the menus of its lists when it is hidden or destroyed.
class FileChooser : public Gtk::FileChooserDialog {
 public:
  using Gtk::FileChooserDialog::FileChooserDialog;
  ~FileChooser() override { end_menus_of(GTK_WIDGET(gobj())); }

 protected:
  void on_hide() override {
    end_menus_of(GTK_WIDGET(gobj()));
    Gtk::FileChooserDialog::on_hide();
  }
};

}  // namespace zemblar

#pragma once

#include <gtkmm/adjustment.h>
#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/colorbutton.h>
#include <gtkmm/label.h>
#include <gtkmm/sizegroup.h>
#include <gtkmm/spinbutton.h>
#include <gtkmm/table.h>

#include "diagram/view.h"
#include "ui/toolkit/image_button.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

/// The panel of a view: name, background and table size.
class ViewProperties : public Gtk::Table {
 public:
  ViewProperties(View& view, const Glib::RefPtr<Gtk::SizeGroup>& labels);

 private:
  /// Adds a row; `access` is the widget that the label's access key activates.
  void add_row(const Glib::ustring& label, Gtk::Widget& content, Gtk::Widget& access);
  Gtk::Widget& size_row();
  void describe_controls();
  void follow_image();
  void set_size_from_image();

  View& view_;
  Glib::RefPtr<Gtk::SizeGroup> labels_;
  unsigned rows_ = 0;
  NameEntry name_;
  Gtk::ColorButton colour_;
  ImageButton image_;
  Gtk::Adjustment width_;
  Gtk::Adjustment height_;
  Gtk::SpinButton width_spin_;
  Gtk::SpinButton height_spin_;
  Gtk::Button from_image_;
  Gtk::CheckButton hidden_;
  ScopedConnection image_changed_;
};

}  // namespace zemblar

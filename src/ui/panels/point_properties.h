#pragma once

#include <gtkmm/button.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/notebook.h>

#include <memory>
#include <vector>

#include "track/point_base.h"
#include "ui/panels/block_properties.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

/// The panel of a point, a signal or a scissor point: its current state, which can be changed here,
/// and pages for its states, its outputs, and (except for a signal) its occupancy.
class PointProperties : public Form {
 public:
  PointProperties(PointBase& point, const Labels& labels);

 private:
  void add_state_row();
  void add_pages(const Labels& labels);
  void connect();
  void follow_state();
  void show_states();
  void add_state_form(PointState& state);
  void show_outputs();
  void add_output_form(unsigned index);
  void remove_output(const Glib::RefPtr<PointOutput>& output);
  void show_soon();
  void show_again();

  ObjectRef<PointBase> point_;
  bool updating_ = false;
  NameEntry name_;
  Gtk::ComboBoxText state_;
  Gtk::Button send_again_;
  Gtk::Notebook pages_;
  Gtk::VBox states_;
  Gtk::Button add_state_;
  Gtk::VBox outputs_;
  Gtk::Button add_output_;
  std::unique_ptr<BlockRows> occupancy_;
  std::vector<ScopedConnection> connections_;
  Gtk::Box* extended_ =
      nullptr;  // the box whose last part gets the focus after the next rebuild, or null
  ScopedConnection show_soon_;
};

}  // namespace zemblar

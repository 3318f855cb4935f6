#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/label.h>
#include <gtkmm/spinbutton.h>
#include <gtkmm/table.h>

#include <memory>
#include <vector>

#include "track/point_state.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/image_button.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

/// The controls for the setting of one output in one state: whether it matters, and a control that
/// depends on its type.
class OutputAction {
 public:
  OutputAction(PointState& state, const Glib::RefPtr<PointOutput>& output);
  void attach_to(Gtk::Table& table, unsigned row);
  void follow();
  /// True if the type of the output has changed since the control was made.
  [[nodiscard]] bool is_outdated() const { return output_->get_type() != type_; }

 private:
  void fill_choice();
  void set_range();
  void connect();
  [[nodiscard]] bool is_choice() const;

  ObjectRef<PointState> state_;
  Glib::RefPtr<PointOutput> output_;
  PointOutput::Type type_;
  bool updating_ = false;
  Gtk::CheckButton enabled_;
  Gtk::HBox action_;
  Gtk::Label before_;
  Gtk::ComboBoxText choice_;
  Gtk::SpinButton number_;
  Gtk::Label unit_;
};

/// The panel of a state of a point or a signal: a row for each output. A signal's state has its
/// picture too.
class PointStateProperties : public Form {
 public:
  PointStateProperties(PointState& state, const Labels& labels);

 private:
  void add_image();
  void connect();
  void show_actions();
  void follow();

  ObjectRef<PointState> state_;
  NameEntry name_;
  ImageButton image_;
  Gtk::Table table_;
  std::vector<std::unique_ptr<OutputAction>> actions_;
  std::vector<ScopedConnection> outputs_changed_;
  ScopedConnection list_changed_;
  ScopedConnection setting_changed_;
  ScopedConnection image_changed_;
  ScopedConnection show_soon_;
};

}  // namespace zemblar

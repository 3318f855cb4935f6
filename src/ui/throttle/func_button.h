#pragma once

#include <gtkmm/box.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <gtkmm/togglebutton.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Function;

/// The button of one locomotive function. It shows the state in force after overlays. Only a press
/// by the user sets the function's state. It cannot take the focus.
class FuncButton : public Gtk::ToggleButton {
 public:
  explicit FuncButton(Function* function = nullptr);

  [[nodiscard]] Function* get_function() const { return function_; }
  /// Sets the function, or null.
  void set_function(Function* function);

 protected:
  void on_toggled() override;

 private:
  void follow_name();
  void follow_state();
  void connect();

  Function* function_ = nullptr;
  bool updating_ = false;
  Gtk::VBox column_{false, 2};
  Gtk::Image picture_;
  Gtk::Label label_;
  ScopedConnection name_changed_;
  ScopedConnection number_changed_;
  ScopedConnection on_image_changed_;
  ScopedConnection off_image_changed_;
  ScopedConnection state_changed_;
  ScopedConnection deleted_;
};

}  // namespace zemblar

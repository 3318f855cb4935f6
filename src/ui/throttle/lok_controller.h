#pragma once

#include <gtkmm/adjustment.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>

#include "runtime/scoped_connection.h"
#include "ui/throttle/func_table.h"
#include "ui/throttle/speed_scale.h"
#include "ui/toolkit/column_scroll.h"
#include "ui/toolkit/dial.h"
#include "ui/toolkit/layout_follower.h"
#include "ui/toolkit/object_button.h"

namespace zemblar {

class Lok;

/// The throttle: drives one locomotive by hand, chosen at its top.
///
/// It writes only to the locomotive and its functions, and follows them, so that a change made
/// elsewhere shows at once. What it shows because it follows is never sent: an emergency stop lets
/// the scale fall to 0 without being lifted, and choosing a locomotive sends it nothing.
///
/// Under the dial stand the wanted speed as a number and a sentence about what the train does and
/// why. The throttle looks for a new sentence with each pulse of the layout, and not when the brake
/// changes: that notification comes before the stop is sent.
class LokController : public Gtk::VBox {
 public:
  LokController();

  /// A throttle in a window of its own, which ends itself when it is closed. The locomotive may be
  /// null.
  static LokController& open(Lok* lok = nullptr);

  /// The digits press the function buttons of those numbers, with Shift from 10 and with Ctrl from
  /// 20 on; Space is the emergency stop. Returns whether the key had a meaning.
  bool press_key(const GdkEventKey& event);

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  [[nodiscard]] ObjectButton& chooser() { return chooser_; }
  [[nodiscard]] Dial& dial() { return dial_; }
  [[nodiscard]] Gtk::VScale& scale() { return scale_; }
  [[nodiscard]] Gtk::Button& direction_button() { return direction_; }
  [[nodiscard]] Gtk::Button& stop_button() { return stop_; }
  [[nodiscard]] FuncTable& functions() { return functions_; }
  /// Of the wanted speed, and the sentence about the train.
  [[nodiscard]] const Gtk::Label& speed_label() const { return speed_label_; }
  [[nodiscard]] const Gtk::Label& sentence() const { return sentence_; }

 private:
  void add_rows();
  void describe_controls();
  void connect(Lok& lok);
  void on_lok_changed();
  void on_scale_moved();
  void on_direction_clicked();
  void on_stop_clicked();
  void follow_speed();
  void follow_direction();
  void follow_actual_speed();
  void show_wanted_speed();
  void tell_condition();
  void keep_room_for_sentence();

  bool updating_ = false;
  ObjectButton chooser_;
  Dial dial_;
  Gtk::Adjustment speed_;
  SpeedScale scale_;
  Gtk::Image direction_image_;
  Gtk::Button direction_;
  Gtk::Image stop_image_;
  Gtk::Button stop_;
  Gtk::Label speed_label_;
  Gtk::Label sentence_;
  int sentence_height_ = 3 * 18;  // pixels; three lines at first
  FuncTable functions_;
  ColumnScroll function_scroll_;
  LayoutFollower pulse_;
  Lok* lok_ = nullptr;
  ScopedConnection speed_changed_;
  ScopedConnection direction_changed_;
  ScopedConnection actual_speed_changed_;
  ScopedConnection emergency_stop_changed_;
};

}  // namespace zemblar

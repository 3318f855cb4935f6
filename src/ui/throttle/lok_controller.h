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

/// The throttle: controls one locomotive, which is chosen at its top.
///
/// It changes only the locomotive and its functions, and shows changes made elsewhere at once.
/// Values shown because of such a change are not sent again: in an emergency stop the scale falls
/// to 0 without ending the stop, and choosing a locomotive sends nothing to it.
///
/// Below the dial are the wanted speed as a number and a sentence about what the train does and
/// why. The sentence is updated at each pulse of the layout, not at the brake's notification, which
/// comes before the stop is sent.
class LokController : public Gtk::VBox {
 public:
  LokController();

  /// Opens a throttle in a window that deletes itself when it is closed. The locomotive may be
  /// null.
  static LokController& open(Lok* lok = nullptr);

  /// Digits press the buttons of functions 0 to 9, with Shift 10 to 19, with Ctrl 20 to 29; Space
  /// is the emergency stop. True if the key was used.
  bool press_key(const GdkEventKey& event);

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  [[nodiscard]] ObjectButton& chooser() { return chooser_; }
  [[nodiscard]] Dial& dial() { return dial_; }
  [[nodiscard]] Gtk::VScale& scale() { return scale_; }
  [[nodiscard]] Gtk::Button& direction_button() { return direction_; }
  [[nodiscard]] Gtk::Button& stop_button() { return stop_; }
  [[nodiscard]] FuncTable& functions() { return functions_; }
  /// The labels of the wanted speed and of the sentence about the train.
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
  void update_sentence();
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
  int sentence_height_ = 3 * 18;  // pixels; initially three lines
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

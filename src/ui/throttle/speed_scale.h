#pragma once

#include <gtkmm/adjustment.h>
#include <gtkmm/scale.h>

namespace zemblar {

/// A vertical scale for a speed in whole numbers, with the highest speed at the top. Up and Right
/// increase the speed. In every theme a press beside the slider moves it by pages towards the
/// pointer. Only the key Home jumps, to 0; no other key and no press does.
class SpeedScale : public Gtk::VScale {
 public:
  explicit SpeedScale(Gtk::Adjustment& speed);

  /// Ends a drag, and ignores a held key, until the button or the key is pressed again: otherwise
  /// these would start a train that has just been stopped.
  void let_go();

 protected:
  bool on_key_press_event(GdkEventKey* event) override;
  bool on_key_release_event(GdkEventKey* event) override;
  bool on_focus_out_event(GdkEventFocus* event) override;
  void on_move_slider(Gtk::ScrollType scroll) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_button_release_event(GdkEventButton* event) override;

 private:
  bool take_whole(Gtk::ScrollType scroll, double value);
  [[nodiscard]] bool is_beside_slider(double y) const;

  bool pages_ =
      false;  // whether a press of the primary button is passed on as the button that pages
  guint held_key_ = 0;   // hardware code; 0 for none
  guint ended_key_ = 0;  // a held key whose repetitions are ignored
};

}  // namespace zemblar

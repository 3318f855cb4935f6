#pragma once

#include <gtkmm/adjustment.h>
#include <gtkmm/scale.h>

namespace zemblar {

/// An upright scale for a speed: whole numbers, fast at the top. Up and Right are faster. A press
/// beside the slider moves by pages towards the pointer in every theme. No press and no key jumps,
/// but Home, to 0.
class SpeedScale : public Gtk::VScale {
 public:
  explicit SpeedScale(Gtk::Adjustment& speed);

  /// The pointer or the key that holds the scale moves it no more until it is pressed anew. It
  /// would set a train that was stopped out again.
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

  bool pages_ = false;   // while the primary button is held
  guint held_key_ = 0;   // hardware codes; 0 for none
  guint ended_key_ = 0;  // is held, and repeats in vain
};

}  // namespace zemblar

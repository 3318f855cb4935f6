#pragma once

#include <gtkmm/adjustment.h>
#include <gtkmm/scale.h>

namespace zemblar {

/// An upright scale for a speed: whole numbers, fast at the top. Up and Right are faster. A press
/// beside the slider moves by pages towards the pointer in every theme, and no press jumps.
class SpeedScale : public Gtk::VScale {
 public:
  explicit SpeedScale(Gtk::Adjustment& speed);

 protected:
  void on_move_slider(Gtk::ScrollType scroll) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_button_release_event(GdkEventButton* event) override;

 private:
  bool take_whole(Gtk::ScrollType scroll, double value);
  [[nodiscard]] bool is_beside_slider(double y) const;

  bool pages_ = false;  // while a button is held
};

}  // namespace zemblar

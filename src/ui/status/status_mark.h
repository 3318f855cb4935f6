#pragma once

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "ui/status/status_shape.h"

namespace zemblar {

/// A mark in the status bar: a shape and a word or two, with a sentence as the tooltip. A click
/// shows the mark's object. Tab reaches the mark, but a click does not focus it.
class StatusMark : public Gtk::Button {
 public:
  struct Look {
    StatusShape::Kind shape = StatusShape::Kind::none;
    Glib::ustring text{};      ///< shown beside the shape; may be empty
    Glib::ustring name{};      ///< for screen readers
    Glib::ustring sentence{};  ///< the tooltip

    bool operator==(const Look& other) const;
  };

  StatusMark();

  /// Installs the style of the marks. Call it before the first window, because it takes a while.
  static void prepare_style();

  void show_look(const Look& look);
  [[nodiscard]] const Look& look() const { return look_; }

 private:
  Look look_;
  StatusShape shape_;
  Gtk::Label text_;
};

}  // namespace zemblar

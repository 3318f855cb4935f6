#pragma once

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "ui/status/status_shape.h"

namespace zemblar {

/// A sign in the status bar: a shape and a word or two, with a sentence as its tooltip. A click
/// leads to the mark's object. Tab reaches the mark, and a click does not take the focus.
class StatusMark : public Gtk::Button {
 public:
  struct Look {
    StatusShape::Kind shape = StatusShape::Kind::none;
    Glib::ustring text{};      ///< beside the shape; empty for the shape alone
    Glib::ustring name{};      ///< for a screen reader
    Glib::ustring sentence{};  ///< the tooltip

    bool operator==(const Look& other) const;
  };

  StatusMark();

  /// Makes the marks' style known, which takes a while: before the first window needs it.
  static void prepare_style();

  void show_look(const Look& look);
  [[nodiscard]] const Look& look() const { return look_; }

 private:
  Look look_;
  StatusShape shape_;
  Gtk::Label text_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/scrolledwindow.h>

namespace zemblar {

/// Shows a widget at full height if the screen has room for it, and scrolls it otherwise. For use
/// in a column that fills a window whose size follows its content.
class ColumnScroll : public Gtk::ScrolledWindow {
 public:
  explicit ColumnScroll(Gtk::Widget& content);

 protected:
  void on_size_request(Gtk::Requisition* requisition) override;

 private:
  [[nodiscard]] int room() const;

  Gtk::Widget& content_;
};

/// Scrolls the viewport around a widget, if there is one, until `part` of the widget is visible.
void show_in_viewport(Gtk::Widget& widget, const Gdk::Rectangle& part);

}  // namespace zemblar

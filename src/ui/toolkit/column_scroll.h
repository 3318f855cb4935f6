#pragma once

#include <gtkmm/scrolledwindow.h>

namespace zemblar {

/// Shows a widget whole where the screen leaves room for it, and scrolls it where it does not. It
/// stands in a column that fills a window which takes the size of its content.
class ColumnScroll : public Gtk::ScrolledWindow {
 public:
  explicit ColumnScroll(Gtk::Widget& content);

 protected:
  void on_size_request(Gtk::Requisition* requisition) override;

 private:
  [[nodiscard]] int room() const;

  Gtk::Widget& content_;
};

/// Scrolls the viewport around a widget, if there is one, until a part of the widget is in sight.
void show_in_viewport(Gtk::Widget& widget, const Gdk::Rectangle& part);

}  // namespace zemblar

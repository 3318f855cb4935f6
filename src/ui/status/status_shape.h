#pragma once

#include <gtkmm/widget.h>

namespace zemblar {

/// A small picture of a state, distinguished by both shape and colour. Draws on its parent's
/// window.
class StatusShape : public Gtk::Widget {
 public:
  enum class Kind {
    none,     ///< draws nothing and has no size
    well,     ///< a green disc
    off,      ///< a red square
    waiting,  ///< an amber triangle with its point up
    lost,     ///< a red cross
    looking,  ///< a grey ring
    held,     ///< two amber bars
    unsaved,  ///< an amber disc
    stop,     ///< a red octagon
  };

  explicit StatusShape(Kind kind = Kind::none);

  static constexpr int size = 12;

  [[nodiscard]] Kind get_kind() const { return kind_; }
  void set_kind(Kind kind);

 protected:
  void on_size_request(Gtk::Requisition* requisition) override;
  bool on_expose_event(GdkEventExpose* event) override;

 private:
  Kind kind_;
};

}  // namespace zemblar

#pragma once

namespace zemblar {

/// Marks the time in which a widget is brought up to date with its model, so that the widget's own
/// signals are not taken for a person's wish.
///
///     void Panel::follow() {
///       const Following scope(following_);
///       scale_.set_value(lok_->get_speed());   // emits value-changed, which returns at once
///     }
class Following {
 public:
  explicit Following(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
  ~Following() { flag_ = before_; }
  Following(const Following&) = delete;
  Following& operator=(const Following&) = delete;

 private:
  bool& flag_;
  bool before_;
};

}  // namespace zemblar

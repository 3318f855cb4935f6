#pragma once

namespace zemblar {

/// Marks the time in which a widget is brought up to date with its model, so that the widget's own
/// signals are not taken for a person's wish.
///
///     void Panel::follow() {
///       const UpdateGuard scope(updating_);
///       scale_.set_value(lok_->get_speed());   // emits value-changed, which returns at once
///     }
class UpdateGuard {
 public:
  explicit UpdateGuard(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
  ~UpdateGuard() { flag_ = before_; }
  UpdateGuard(const UpdateGuard&) = delete;
  UpdateGuard& operator=(const UpdateGuard&) = delete;

 private:
  bool& flag_;
  bool before_;
};

}  // namespace zemblar

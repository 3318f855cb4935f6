#pragma once

namespace zemblar {

/// Sets a flag while a widget is updated from its model, so that the handlers of the widget's
/// signals can tell this from input by the user.
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

#include "ui/throttle/func_button.h"

#include "core/i18n.h"
#include "locomotives/function.h"
#include "ui/toolkit/picture.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

constexpr int picture_size = 48;
constexpr int widest_name = 24;  // characters; limits the width of the throttle's window

Glib::RefPtr<Gdk::Pixbuf> picture_of(const Function& function) {
  const bool on = function.get_state_overlay();
  const auto& first = on ? function.on_picture() : function.off_picture();
  const auto& second = on ? function.off_picture() : function.on_picture();
  const auto picture = load_picture(first, picture_size);
  return picture ? picture : load_picture(second, picture_size);
}

/// The name of the key that presses the button in the throttle.
Glib::ustring key_of(unsigned number) {
  const auto digit = number % 10;
  if (number < 10) return Glib::ustring::compose("%1", digit);
  return Glib::ustring::compose(number < 20 ? _("Shift+%1") : _("Ctrl+%1"), digit);
}

Glib::ustring tooltip_of(const Function& function) {
  const auto number = function.get_function();
  return Glib::ustring::compose(_("%1 (function %2, key %3)"), function.get_name(), number,
                                key_of(number));
}

}  // namespace

FuncButton::FuncButton(Function* function) {
  set_can_focus(false);
  label_.set_ellipsize(Pango::ELLIPSIZE_END);
  label_.set_max_width_chars(widest_name);
  column_.pack_start(picture_, true, true);
  column_.pack_start(label_, false, false);
  add(column_);
  column_.show_all();
  set_function(function);
}

void FuncButton::set_function(Function* function) {
  function_ = function;
  connect();
  follow_name();
  follow_state();
}

void FuncButton::connect() {
  for (auto* connection : {&name_changed_, &number_changed_, &on_image_changed_,
                           &off_image_changed_, &state_changed_, &deleted_}) {
    connection->disconnect();
  }
  if (!function_) return;
  const auto name = [this] { follow_name(); };
  const auto state = [this] { follow_state(); };
  name_changed_ = function_->property_name().signal_changed().connect(name);
  number_changed_ = function_->property_function().signal_changed().connect(name);
  on_image_changed_ = function_->property_on_image().signal_changed().connect(state);
  off_image_changed_ = function_->property_off_image().signal_changed().connect(state);
  state_changed_ = function_->property_state_overlay().signal_changed().connect(state);
  deleted_ = function_->signal_deleted().connect([this] { set_function(nullptr); });
}

void FuncButton::on_toggled() {
  Gtk::ToggleButton::on_toggled();
  if (updating_ || !function_) return;
  function_->set_state(get_active());
  // The state in force may be unchanged because of an overlay, so the button shows that again.
  if (function_) follow_state();
}

void FuncButton::follow_name() {
  const auto name = function_ ? function_->get_name() : Glib::ustring();
  label_.set_text(name);
  get_accessible()->set_name(name);
  set_tooltip_text(function_ ? tooltip_of(*function_) : name);
}

void FuncButton::follow_state() {
  const UpdateGuard scope(updating_);
  const auto picture = function_ ? picture_of(*function_) : Glib::RefPtr<Gdk::Pixbuf>();
  if (picture) {
    picture_.set(picture);
  } else {
    picture_.clear();
  }
  const bool on = function_ && function_->get_state_overlay();
  if (get_active() != on) set_active(on);
}

}  // namespace zemblar

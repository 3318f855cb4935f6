#include "ui/throttle/lok_controller.h"

#include <gdk/gdkkeysyms.h>
#include <glibmm/main.h>
#include <gtkmm/stock.h>
#include <gtkmm/window.h>

#include <cmath>

#include "core/i18n.h"
#include "locomotives/lok.h"
#include "track/train_condition.h"
#include "ui/toolkit/close_key.h"
#include "ui/toolkit/key_place.h"
#include "ui/toolkit/type_size.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

constexpr int gap = 4;
constexpr double max_speed = 126;
constexpr int sentence_width = 290;

/// A throttle's window. It handles its keys before the focused control does, so that Space stops
/// the train wherever the focus is.
class ThrottleWindow : public Gtk::Window {
 public:
  ThrottleWindow() {
    set_title(_("Throttle"));
    set_icon_name("zemblar");
    set_resizable(false);
    add(controller);
    close_by_key(*this);
    place_beside_last();
    show_all();
    last_ = this;
  }
  ~ThrottleWindow() override {
    if (last_ == this) last_ = nullptr;
  }

  LokController controller;

 protected:
  bool on_key_press_event(GdkEventKey* event) override {
    return controller.press_key(*event) || Gtk::Window::on_key_press_event(event);
  }

  void on_hide() override {
    Gtk::Window::on_hide();
    Glib::signal_idle().connect_once([this] { delete this; });
  }

 private:
  // Puts the window beside the last one, because two throttles on top of each other look like one.
  // If the screen is too narrow, the window manager chooses the place.
  void place_beside_last() {
    if (!last_ || !last_->get_window() || !last_->get_visible()) return;
    Gdk::Rectangle frame;
    last_->get_window()->get_frame_extents(frame);
    const int left = frame.get_x() + frame.get_width();
    if (left + frame.get_width() > get_screen()->get_width()) return;
    move(left, frame.get_y());
  }

  static inline ThrottleWindow* last_ = nullptr;  // the one opened last
};

/// The function number of a key: Shift adds 10, Ctrl adds 20.
std::optional<unsigned> function_of(const GdkEventKey& event) {
  const auto digit = digit_of(event);
  if (!digit) return {};
  const bool on_keypad = event.keyval >= GDK_KEY_KP_0 && event.keyval <= GDK_KEY_KP_9;
  const bool shift = (event.state & GDK_SHIFT_MASK) != 0 && !on_keypad;
  const bool control = (event.state & GDK_CONTROL_MASK) != 0;
  if (shift && control) return {};
  return *digit + (shift ? 10 : 0) + (control ? 20 : 0);
}

}  // namespace

LokController& LokController::open(Lok* lok) {
  auto* window = new ThrottleWindow;  // deletes itself
  window->controller.chooser_.set_object(lok);
  return window->controller;
}

LokController::LokController()
    : Gtk::VBox(false, gap),
      chooser_(lok_choices()),
      speed_(0, 0, max_speed, 1, 10, 0),
      scale_(speed_),
      direction_image_(Gtk::Stock::GO_FORWARD, Gtk::ICON_SIZE_LARGE_TOOLBAR),
      stop_image_(Gtk::Stock::STOP, Gtk::ICON_SIZE_LARGE_TOOLBAR),
      function_scroll_(functions_),
      pulse_([this](Layout& layout, auto& connections) {
        connections.emplace_back(layout.signal_pulse().connect([this] { update_sentence(); }));
      }) {
  set_border_width(gap);
  direction_.add(direction_image_);
  stop_.add(stop_image_);
  add_rows();
  describe_controls();

  chooser_.property_object().signal_changed().connect(
      sigc::mem_fun(*this, &LokController::on_lok_changed));
  speed_.signal_value_changed().connect(sigc::mem_fun(*this, &LokController::on_scale_moved));
  direction_.signal_clicked().connect(sigc::mem_fun(*this, &LokController::on_direction_clicked));
  stop_.signal_clicked().connect(sigc::mem_fun(*this, &LokController::on_stop_clicked));
  on_lok_changed();
  show_all_children();
}

void LokController::add_rows() {
  auto* label = Gtk::manage(new Gtk::Label(_("_Locomotive:"), true));
  label->set_mnemonic_widget(chooser_);
  auto* selection = Gtk::manage(new Gtk::HBox(false, gap));
  selection->pack_start(*label, false, false);
  selection->pack_start(chooser_, true, true);

  auto* controls = Gtk::manage(new Gtk::VBox(false, gap));
  controls->pack_start(scale_, true, true);
  controls->pack_start(direction_, false, false);
  controls->pack_start(stop_, false, false);
  auto* drive = Gtk::manage(new Gtk::HBox(false, gap));
  drive->pack_start(dial_, true, true);
  drive->pack_start(*controls, false, false);

  pack_start(*selection, false, false);
  pack_start(*drive, true, true);
  pack_start(speed_label_, false, false);
  pack_start(sentence_, false, false);
  pack_start(function_scroll_, false, false);
}

void LokController::describe_controls() {
  scale_.get_accessible()->set_name(_("Speed"));
  scale_.set_tooltip_text(_("Wanted speed, 0 to 126"));
  direction_.get_accessible()->set_name(_("Direction"));
  stop_.get_accessible()->set_name(_("Emergency Stop"));
  stop_.set_tooltip_text(_("Emergency stop of this locomotive (Space)"));
  sentence_.set_line_wrap();
  keep_room_for_sentence();
  sentence_.set_alignment(0, 0);
  speed_label_.set_alignment(0, 0.5);
  chooser_.emphasize();
}

void LokController::on_lok_changed() {
  lok_ = dynamic_cast<Lok*>(chooser_.get_object());
  functions_.set_lok(lok_);
  for (auto* connection :
       {&speed_changed_, &direction_changed_, &actual_speed_changed_, &emergency_stop_changed_}) {
    connection->disconnect();
  }
  for (auto* control : std::initializer_list<Gtk::Widget*>{&dial_, &scale_, &direction_, &stop_}) {
    control->set_sensitive(lok_ != nullptr);
  }
  dial_.set_red_visible(lok_ != nullptr);
  if (!lok_) dial_.set_black_visible(false);
  if (lok_) {
    connect(*lok_);
    scale_.grab_focus();
  }
  show_wanted_speed();
  update_sentence();
}

void LokController::connect(Lok& lok) {
  speed_changed_ =
      lok.signal_speed_changed().connect(sigc::mem_fun(*this, &LokController::follow_speed));
  direction_changed_ = lok.signal_direction_changed().connect(
      sigc::mem_fun(*this, &LokController::follow_direction));
  actual_speed_changed_ = lok.signal_actual_speed_changed().connect(
      sigc::mem_fun(*this, &LokController::follow_actual_speed));
  emergency_stop_changed_ = lok.signal_emergency_stop_changed().connect([this] {
    if (lok_->get_emergency_stop()) scale_.let_go();
    update_sentence();
  });
  follow_speed();
  follow_direction();
  follow_actual_speed();
}

void LokController::on_scale_moved() {
  const auto speed = static_cast<unsigned>(std::lround(speed_.get_value()));
  dial_.set_red(speed);
  if (lok_ && !updating_) lok_->set_speed(speed);
  show_wanted_speed();
  update_sentence();
}

void LokController::on_direction_clicked() {
  if (!lok_) return;
  lok_->set_direction(opposite(lok_->get_direction()));
  // Under a script's overlay the locomotive records the change without a notification.
  if (lok_) follow_direction();
}

void LokController::on_stop_clicked() {
  if (lok_) lok_->set_emergency_stop(true);
}

void LokController::follow_speed() {
  const UpdateGuard scope(updating_);
  speed_.set_value(lok_->get_speed());
}

void LokController::follow_direction() {
  const bool forwards = lok_->get_direction() == Direction::Forwards;
  direction_image_.set(forwards ? Gtk::Stock::GO_FORWARD : Gtk::Stock::GO_BACK,
                       Gtk::ICON_SIZE_LARGE_TOOLBAR);
  direction_.set_tooltip_text(forwards ? _("Direction: forwards. Press to reverse")
                                       : _("Direction: reverse. Press to go forwards"));
}

void LokController::follow_actual_speed() {
  const int speed = lok_->get_actual_speed();
  if (speed >= 0) dial_.set_black(static_cast<unsigned>(speed));
  dial_.set_black_visible(speed >= 0);
}

void LokController::show_wanted_speed() {
  speed_label_.set_text(lok_ ? Glib::ustring::compose(_("Wanted speed: %1"), lok_->get_speed())
                             : "");
}

// Keeps the height of the longest sentence so far, so that the window does not change its size all
// the time, and the whole sentence is visible.
void LokController::keep_room_for_sentence() {
  const int width = for_type(sentence_, sentence_width);
  sentence_.set_size_request(width, -1);
  sentence_height_ = std::max(sentence_height_, sentence_.size_request().height);
  sentence_.set_size_request(width, sentence_height_);
}

void LokController::update_sentence() {
  const auto text = lok_ ? train_sentence(*lok_) : _("Choose a locomotive above.");
  if (text.raw() == sentence_.get_text().raw()) return;
  sentence_.set_text(text);
  keep_room_for_sentence();
  sentence_.set_tooltip_text(text);
  dial_.set_tooltip_text(text);
}

bool LokController::press_key(const GdkEventKey& event) {
  if (!lok_ || (event.state & (GDK_MOD1_MASK | GDK_SUPER_MASK)) != 0) return false;
  if (has_meaning(event, {GDK_KEY_space, GDK_KEY_KP_Space})) {
    on_stop_clicked();
    return true;
  }
  // A digit is used even without such a function, so that it has no effect on the scale.
  const auto function = function_of(event);
  if (function) functions_.press(*function);
  return function.has_value();
}

}  // namespace zemblar

#include "ui/windows/application.h"

#include <glibmm/exceptionhandler.h>
#include <gtkmm/label.h>
#include <gtkmm/main.h>
#include <gtkmm/settings.h>
#include <gtkmm/window.h>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/recovery_copy.h"
#include "core/status.h"
#include "devices/command_station.h"
#include "devices/port/hw_list.h"
#include "locomotives/decoder.h"
#include "locomotives/last_stop.h"
#include "locomotives/moving_trains.h"
#include "runtime/context.h"
#include "ui/status/status_mark.h"
#include "ui/status/stop_all.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/icons.h"
#include "ui/toolkit/stock.h"
#include "ui/toolkit/stray_press.h"
#include "ui/windows/forced_end.h"
#include "ui/windows/layout_dialogs.h"
#include "ui/windows/layout_window.h"
#include "ui/windows/splash_screen.h"
#include "ui/windows/track_editor.h"
#include "ui/windows/track_view.h"

namespace zemblar {
namespace {

/// Gives the user time to see the splash first.
constexpr unsigned first_window_delay = 1500;  // ms

/// Shows an exception that has left a handler in the status line. Call it in a catch block.
void report_exception() {
  try {
    throw;
  } catch (const Glib::Exception& error) {
    set_status(error.what());
  } catch (const std::exception& error) {
    set_status(Glib::ustring::compose(_("Something went wrong: %1"), readable(error.what())));
  } catch (...) {
    set_status(_("Something went wrong."));
  }
}

void start_document() {
  auto& layout = Layout::get();
  layout.new_document(true);  // also resets the file
  const auto path = GlobalOptions::get().get_layout();
  if (!path.empty()) Layout::open(path);
}

// Measures a text, which loads the fonts.
void load_fonts() {
  Gtk::Label("Zemblar").size_request();
}

/// Loads the pictures and fonts that every window except the splash needs. A window that opens
/// earlier loads them itself.
void prepare_windows() {
  add_builtin_icons();
  Gtk::Window::set_default_icon_name("zemblar");
  load_fonts();
  StatusMark::prepare_style();
}

/// The function that opens the window of a start without options.
auto* usual_window() {
  return GlobalOptions::get().get_layout().empty() ? TrackEditor::open : TrackView::open;
}

void open_first_windows(const StartOptions& options) {
  auto later = [](void (*open)()) {
    Glib::signal_timeout().connect_once(sigc::ptr_fun(open), first_window_delay);
  };
  if (options.track_editor) later(TrackEditor::open);
  if (options.track_view) later(TrackView::open);
  if (!options.track_editor && !options.track_view) later(usual_window());
}

}  // namespace

void set_up_process() {
  raise_float_flags();
  set_up_language();
}

Application::Application(StartOptions options) {
  Glib::add_exception_handler(sigc::ptr_fun(report_exception));
  stock::register_items();
  EditHistory::install();
  StopAll::install();
  drop_stray_presses();
  install_layout_dialogs();
  GlobalOptions::get();
  Gtk::Settings::get_default()->property_gtk_toolbar_style() = Gtk::TOOLBAR_BOTH;
  new SplashScreen;                                                  // deletes itself
  Glib::signal_idle().connect_once(sigc::ptr_fun(prepare_windows));  // while the splash is shown
  if (options.guarded) guard_ = std::make_unique<TrainGuard>();
  start_document();
  if (options.keep_unsaved) {
    recovery_copy_ = std::make_unique<RecoveryCopy>();
    recovery_copy_->start(GlobalOptions::get().get_layout());
    keep_work_at_forced_end();
  }
  Decoder::signal_out_of_reach().connect(sigc::ptr_fun(&LastStop::send));
  CommandStation::signal_leaving_default().connect(sigc::ptr_fun(&stop_before_leaving_default));
  HWList::get();
  tray_ = std::make_unique<Tray>(Layout::get());
  tray_->check_place_later();
  open_first_windows(options);
  first_windows_ = Timeout::once(std::chrono::milliseconds(first_window_delay), [] {});
}

// Runs the main loop until the stations have answered, or the user quits once more.
void Application::stop_trains() {
  if (!any_train_moves()) return;
  StandStill stand_still;
  stand_still.begin([] { Gtk::Main::quit(); });
  Gtk::Main::run();
}

void Application::serve(const Instance::Wish& wish) const {
  if (!wish.file.empty()) open_as_chosen(wish.file);
  if (wish.track_editor) TrackEditor::open();
  if (wish.track_view) TrackView::open();
  if (wish.track_editor || wish.track_view || first_windows_.armed()) return;
  if (!LayoutWindow::present_all()) usual_window()();
}

void Application::run() {
  Gtk::Main::run();
  if (!GlobalOptions::get().get_trains_go_on()) stop_trains();
  if (guard_) guard_->take_leave();
  if (auto* copies = RecoveryCopy::get()) copies->finish();
}

}  // namespace zemblar

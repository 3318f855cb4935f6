#include "ui/application.h"

#include <glibmm/exceptionhandler.h>
#include <gtkmm/main.h>
#include <gtkmm/settings.h>
#include <gtkmm/window.h>

#include <clocale>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/recovery_copy.h"
#include "core/status.h"
#include "devices/hw_list.h"
#include "runtime/context.h"
#include "ui/edit_history.h"
#include "ui/forced_end.h"
#include "ui/icons.h"
#include "ui/layout_dialogs.h"
#include "ui/splash_screen.h"
#include "ui/stock.h"
#include "ui/track_editor.h"
#include "ui/track_view.h"

namespace zemblar {
namespace {

/// The splash is seen before anything else.
constexpr unsigned first_window_delay = 1500;  // ms

/// What left a handler must reach the person. Called while the exception is being handled.
void tell_of_exception() {
  try {
    throw;
  } catch (const Glib::Exception& error) {
    set_status(error.what());
  } catch (const std::exception& error) {
    set_status(Glib::ustring::compose(_("Something went wrong: %1"), error.what()));
  } catch (...) {
    set_status(_("Something went wrong."));
  }
}

void start_document() {
  auto& layout = Layout::get();
  layout.new_document(true);  // drops the file as well
  const auto path = GlobalOptions::get().get_layout();
  if (!path.empty()) Layout::open(path);
}

void open_first_windows(StartOptions options) {
  if (!options.track_view && !options.track_editor) {
    const bool remembered = !GlobalOptions::get().get_layout().empty();
    (remembered ? options.track_view : options.track_editor) = true;
  }
  auto later = [](void (*open)()) {
    Glib::signal_timeout().connect_once(sigc::ptr_fun(open), first_window_delay);
  };
  if (options.track_editor) later(TrackEditor::open);
  if (options.track_view) later(TrackView::open);
}

}  // namespace

void set_up_process() {
  raise_float_flags();
  std::setlocale(LC_ALL, "");
  bindtextdomain(GETTEXT_PACKAGE, ZEMBLAR_LOCALEDIR);
  bind_textdomain_codeset(GETTEXT_PACKAGE, "UTF-8");
}

Application::Application(StartOptions options) {
  Glib::add_exception_handler(sigc::ptr_fun(tell_of_exception));
  stock::register_items();
  EditHistory::install();
  // Drawn while the splash is looked at: nothing before the first windows needs them.
  Glib::signal_idle().connect_once(sigc::ptr_fun(add_builtin_icons));
  install_layout_dialogs();
  GlobalOptions::get();
  Gtk::Settings::get_default()->property_gtk_toolbar_style() = Gtk::TOOLBAR_BOTH;
  Gtk::Window::set_default_icon_name("zemblar");
  new SplashScreen;  // ends itself
  start_document();
  if (options.keep_unsaved) {
    recovery_copy_ = std::make_unique<RecoveryCopy>();
    recovery_copy_->start(GlobalOptions::get().get_layout());
    keep_work_at_forced_end();
  }
  HWList::get();
  tray_ = std::make_unique<Tray>(Layout::get());
  tray_->watch_for_a_place();
  open_first_windows(options);
}

void Application::run() {
  Gtk::Main::run();
  if (auto* copies = RecoveryCopy::get()) copies->finish();
}

}  // namespace zemblar

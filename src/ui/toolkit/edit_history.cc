#include "ui/toolkit/edit_history.h"

#include <glibmm/main.h>
#include <gtkmm/main.h>

#include <array>
#include <map>
#include <optional>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "ui/toolkit/menu_grab.h"
#include "ui/toolkit/menu_owner.h"

namespace zemblar {
namespace {

std::map<GtkWidget*, EditHistory*>& histories() {
  static std::map<GtkWidget*, EditHistory*> by_window;
  return by_window;
}

/// The history of the last button or key press; a menu belongs to it.
EditHistory* latest = nullptr;
/// Exists while a mouse button is held down.
std::unique_ptr<EditJournal::Hold> held;

constexpr auto sharer_key = "zemblar-history-window";

EditHistory* history_of(GtkWidget* window) {
  auto* shared = static_cast<GtkWidget*>(g_object_get_data(G_OBJECT(window), sharer_key));
  const auto found = histories().find(shared ? shared : window);
  return found == histories().end() ? nullptr : found->second;
}

/// Signals that change the document even outside an event, because assistive technology presses
/// buttons and chooses from menus without events.
struct Action {
  GType type;
  const char* signal;
};
const std::array actions{Action{GTK_TYPE_BUTTON, "clicked"},
                         Action{GTK_TYPE_TOGGLE_BUTTON, "toggled"},
                         Action{GTK_TYPE_MENU_ITEM, "activate"},
                         Action{GTK_TYPE_COMBO_BOX, "changed"},
                         Action{GTK_TYPE_SPIN_BUTTON, "value-changed"},
                         Action{GTK_TYPE_ENTRY, "activate"},
                         Action{GTK_TYPE_EDITABLE, "changed"}};

/// The window that contains a widget; for a menu, the window of the widget that it is attached to.
GtkWidget* window_of(GtkWidget* widget) {
  auto* window = widget ? gtk_widget_get_toplevel(widget) : nullptr;
  while (GTK_IS_WINDOW(window)) {
    auto* menu = gtk_bin_get_child(GTK_BIN(window));
    auto* owner = GTK_IS_MENU(menu) ? owner_of_menu(GTK_MENU(menu)) : nullptr;
    if (!owner) return window;
    window = owner;
  }
  return nullptr;
}

bool is_action(GdkEventType type) {
  return type == GDK_BUTTON_PRESS || type == GDK_KEY_PRESS;
}

}  // namespace

EditHistory::EditHistory(Gtk::Window& window) : window_(window) {
  histories()[GTK_WIDGET(window.gobj())] = this;
  EditJournal::get().signal_forgotten().connect(sigc::track_obj(
      [this] {
        steps_.clear();
        signal_changed_.emit();
      },
      *this));
}

EditHistory::~EditHistory() {
  histories().erase(GTK_WIDGET(window_.gobj()));
  if (latest != this) return;
  latest = nullptr;
  held.reset();
}

// A window that is destroyed meanwhile needs no step. Only its address is used, since it may be
// invalid.
EditHistory::Work::Work(EditHistory& history) {
  auto* window = GTK_WIDGET(history.window_.gobj());
  EditJournal::get().begin([window](std::unique_ptr<EditStep> step) {
    const auto found = histories().find(window);
    if (found == histories().end()) return;
    found->second->record(std::move(step));
  });
}

EditHistory::Work::~Work() {
  EditJournal::get().end();
}

void EditHistory::install() {
  gdk_event_handler_set([](GdkEvent* event, gpointer) { dispatch(event); }, nullptr, nullptr);
  for (const auto& [type, signal] : actions) {
    auto* type_class =
        G_TYPE_IS_INTERFACE(type) ? g_type_default_interface_ref(type) : g_type_class_ref(type);
    g_signal_add_emission_hook(g_signal_lookup(signal, type), 0, &EditHistory::on_action, nullptr,
                               nullptr);
    static_cast<void>(type_class);  // never released: the hook exists until the program ends
  }
}

// The step ends with the present iteration of the main loop.
gboolean EditHistory::on_action(GSignalInvocationHint* /*hint*/, guint /*count*/,
                                const GValue* values, gpointer /*data*/) {
  static std::optional<Work> work;
  static ScopedConnection end;
  if (EditJournal::get().is_writing()) return TRUE;
  auto* history = of(GTK_WIDGET(g_value_get_object(&values[0])));
  if (!history) return TRUE;
  work.emplace(*history);
  end = Glib::signal_idle().connect(
      [] {
        work.reset();
        return false;
      },
      Glib::PRIORITY_HIGH);
  return TRUE;
}

void EditHistory::dispatch(GdkEvent* event) {
  release_hidden_menu();
  auto* history = of(gtk_get_event_widget(event));
  if (is_action(event->type)) latest = history;
  std::optional<Work> work;
  if (history) work.emplace(*history);
  if (event->type == GDK_BUTTON_PRESS || event->type == GDK_BUTTON_RELEASE) held.reset();
  if (history && event->type == GDK_BUTTON_PRESS) held = std::make_unique<EditJournal::Hold>();
  gtk_main_do_event(event);
}

EditHistory* EditHistory::of(Gtk::Widget& widget) {
  return of(widget.gobj());
}

void EditHistory::share(Gtk::Window& opened, Gtk::Widget& opener) {
  auto* history = of(opener);
  if (!history) return;
  g_object_set_data(G_OBJECT(opened.gobj()), sharer_key, history->window_.gobj());
}

// Menus and dialogs are separate windows, which belong to the history of their parent.
EditHistory* EditHistory::of(GtkWidget* widget) {
  auto* window = window_of(widget);
  if (!window) return nullptr;
  auto* history = history_of(window);
  if (history) return history;
  if (auto* parent = gtk_window_get_transient_for(GTK_WINDOW(window))) {
    history = history_of(GTK_WIDGET(parent));
  }
  const bool is_menu = gtk_window_get_window_type(GTK_WINDOW(window)) == GTK_WINDOW_POPUP;
  return history || !is_menu ? history : latest;
}

// --- Undo and redo ---

void EditHistory::undo() {
  if (const auto* step = prepare().next_undo()) {
    announce(Glib::ustring::compose(_("Undone: %1."), step->get_name()));
  }
  apply_step(&EditList::undo);
}

void EditHistory::announce(const Glib::ustring& text) {
  announced_ = text;
  set_status(text);
}

// Clears the text about the last undo or redo, which would seem to be about the new step.
void EditHistory::record(std::unique_ptr<EditStep> step) {
  steps_.record(std::move(step));
  if (!announced_.empty() && get_status().raw() == announced_.raw()) clear_status();
  announced_.clear();
  signal_changed_.emit();
}

void EditHistory::redo() {
  if (const auto* step = prepare().next_redo()) {
    announce(Glib::ustring::compose(_("Redone: %1."), step->get_name()));
  }
  apply_step(&EditList::redo);
}

// Ends what is being typed or dragged, which becomes the newest step.
EditList& EditHistory::prepare() {
  if (Layout::dialogs().finish_edits) Layout::dialogs().finish_edits();
  EditJournal::get().flush();
  return steps_;
}

void EditHistory::apply_step(bool (EditList::*step)()) {
  const EditJournal::Pause pause;
  (steps_.*step)();
  signal_changed_.emit();
}

}  // namespace zemblar

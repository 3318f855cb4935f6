#include "ui/edit_history.h"

#include <gtkmm/main.h>

#include <map>
#include <optional>

#include "core/layout.h"

namespace zemblar {
namespace {

std::map<GtkWidget*, EditHistory*>& histories() {
  static std::map<GtkWidget*, EditHistory*> by_window;
  return by_window;
}

/// Where somebody has last pressed something; a menu belongs to it.
EditHistory* latest = nullptr;
/// While a button is held.
std::unique_ptr<EditJournal::Hold> held;

EditHistory* history_of(GtkWidget* window) {
  const auto found = histories().find(window);
  return found == histories().end() ? nullptr : found->second;
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

// A window that is gone by the end needs no step.
EditHistory::Work::Work(EditHistory& history) {
  auto* window = GTK_WIDGET(history.window_.gobj());
  EditJournal::get().begin([window](std::unique_ptr<EditStep> step) {
    auto* now = history_of(window);
    if (!now) return;
    now->steps_.record(std::move(step));
    now->signal_changed_.emit();
  });
}

EditHistory::Work::~Work() {
  EditJournal::get().end();
}

void EditHistory::install() {
  gdk_event_handler_set([](GdkEvent* event, gpointer) { dispatch(event); }, nullptr, nullptr);
}

void EditHistory::dispatch(GdkEvent* event) {
  auto* history = of(event);
  std::optional<Work> work;
  if (history) work.emplace(*history);
  if (event->type == GDK_BUTTON_PRESS || event->type == GDK_BUTTON_RELEASE) held.reset();
  if (history && event->type == GDK_BUTTON_PRESS) held = std::make_unique<EditJournal::Hold>();
  gtk_main_do_event(event);
}

// Menus and dialogs are windows of their own.
EditHistory* EditHistory::of(const GdkEvent* event) {
  auto* widget = gtk_get_event_widget(const_cast<GdkEvent*>(event));
  auto* window = widget ? gtk_widget_get_toplevel(widget) : nullptr;
  if (!GTK_IS_WINDOW(window)) return nullptr;
  auto* history = history_of(window);
  if (!history) {
    auto* parent = gtk_window_get_transient_for(GTK_WINDOW(window));
    if (parent) history = history_of(GTK_WIDGET(parent));
  }
  if (!history && gtk_window_get_window_type(GTK_WINDOW(window)) == GTK_WINDOW_POPUP) return latest;
  if (is_action(event->type)) latest = history;
  return history;
}

// --- Undo and redo ---

void EditHistory::undo() {
  step_back(&EditList::undo);
}

void EditHistory::redo() {
  step_back(&EditList::redo);
}

// What is being typed or dragged is a step of its own, which is the newest.
void EditHistory::step_back(bool (EditList::*step)()) {
  if (Layout::dialogs().finish_edits) Layout::dialogs().finish_edits();
  EditJournal::get().flush();
  const EditJournal::Pause pause;
  (steps_.*step)();
  signal_changed_.emit();
}

}  // namespace zemblar

#pragma once

#include <gtkmm/window.h>

#include "edit/edit_journal.h"
#include "edit/edit_list.h"

namespace zemblar {

/// The undo history of one window: what the user has changed in the document there, and what has
/// been undone.
///
/// All changes during an event of the window belong to its history, also those made by its menus
/// and dialogs, and by assistive technology without events. Everything between the press of a mouse
/// button and its release is one step.
class EditHistory : public sigc::trackable {
 public:
  explicit EditHistory(Gtk::Window& window);
  ~EditHistory();
  EditHistory(const EditHistory&) = delete;
  EditHistory& operator=(const EditHistory&) = delete;

  void undo();
  void redo();
  [[nodiscard]] EditList& steps() { return steps_; }
  /// The next step to undo or redo may have changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

  /// Makes changes in the window `opened` belong to the history of the window that contains
  /// `opener`.
  static void share(Gtk::Window& opened, Gtk::Widget& opener);
  /// The history of the window that contains the widget, or null.
  [[nodiscard]] static EditHistory* of(Gtk::Widget& widget);

  /// Installs `dispatch` as the handler of all events, also of windows without a history.
  static void install();
  /// Handles one event.
  static void dispatch(GdkEvent* event);

 private:
  /// While one exists, changes belong to that window's history.
  class Work {
   public:
    explicit Work(EditHistory& history);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
  };

  EditList& prepare();
  void apply_step(bool (EditList::*step)());
  void record(std::unique_ptr<EditStep> step);
  void announce(const Glib::ustring& text);
  static EditHistory* of(GtkWidget* widget);
  static gboolean on_action(GSignalInvocationHint* hint, guint count, const GValue* values,
                            gpointer data);

  Gtk::Window& window_;
  EditList steps_;
  Glib::ustring announced_;  // the status text about the last undo or redo
  sigc::signal<void> signal_changed_;
};

}  // namespace zemblar

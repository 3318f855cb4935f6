#pragma once

#include <gtkmm/window.h>

#include "edit/edit_journal.h"
#include "edit/edit_list.h"

namespace zemblar {

/// What has been done to the document in one window, and what of it has been undone.
///
/// What changes while an event for the window is served belongs to it; so does what its menus and
/// dialogs do, and what assistive technology does in it without events. From the press of a button
/// to its release all is one step.
class EditHistory : public sigc::trackable {
 public:
  explicit EditHistory(Gtk::Window& window);
  ~EditHistory();
  EditHistory(const EditHistory&) = delete;
  EditHistory& operator=(const EditHistory&) = delete;

  void undo();
  void redo();
  [[nodiscard]] EditList& steps() { return steps_; }
  /// Another step may be next.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

  /// What is done in `opened` belongs to the history of the window in which `opener` stands.
  static void share(Gtk::Window& opened, Gtk::Widget& opener);
  /// That of the window in which something stands; null for none.
  [[nodiscard]] static EditHistory* of(Gtk::Widget& widget);

  /// Serves events from now on, those of windows without a history as well.
  static void install();
  /// Serves one.
  static void dispatch(GdkEvent* event);

 private:
  /// What changes while it lives was done in that window.
  class Work {
   public:
    explicit Work(EditHistory& history);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
  };

  EditList& prepare();
  void step_back(bool (EditList::*step)());
  void record(std::unique_ptr<EditStep> step);
  void tell(const Glib::ustring& text);
  static EditHistory* of(GtkWidget* widget);
  static gboolean on_action(GSignalInvocationHint* hint, guint count, const GValue* values,
                            gpointer data);

  Gtk::Window& window_;
  EditList steps_;
  Glib::ustring told_;  // of the last step back or forth
  sigc::signal<void> signal_changed_;
};

}  // namespace zemblar

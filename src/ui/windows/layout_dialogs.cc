#include "ui/windows/layout_dialogs.h"

#include <glibmm/convert.h>
#include <glibmm/miscutils.h>
#include <gtkmm/celleditable.h>
#include <gtkmm/filefilter.h>
#include <gtkmm/spinbutton.h>
#include <gtkmm/stock.h>
#include <gtkmm/treeview.h>

#include <memory>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "runtime/scoped_connection.h"
#include "ui/panels/host_entry.h"
#include "ui/status/trains_standing.h"
#include "ui/toolkit/file_chooser.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {
namespace {

enum Response { cancelled = 0, accepted = 1 };

Gtk::Window* active_window() {
  for (auto* window : Gtk::Window::list_toplevels()) {
    if (window->property_is_active()) return window;
  }
  return nullptr;
}

/// A file chooser for layout files, which starts in the folder of the present file.
class LayoutChooser : public FileChooser {
 public:
  LayoutChooser(const Glib::ustring& title, Gtk::FileChooserAction action,
                const Gtk::StockID& accept)
      : FileChooser(title, action) {
    add_button(Gtk::Stock::CANCEL, cancelled);
    add_button(accept, accepted);
    set_default_response(accepted);
    set_icon_name("zemblar");
    if (auto* window = active_window()) set_transient_for(*window);
    add_filters();
    const auto file = Layout::get().get_file();
    const auto folder = file ? file->get_parent()->get_path() : Glib::get_current_dir();
    set_current_folder(folder);
    // While the dialog is open, the layout can be replaced from the tray menu.
    layout_ended_ = Layout::get().signal_deleted().connect([this] { response(cancelled); });
  }

  /// Runs the dialog and hides it. True if the user has chosen a file.
  bool choose() {
    const bool chosen = run() == accepted;
    layout_ended_.disconnect();
    hide();
    return chosen;
  }

  [[nodiscard]] bool wants_layout_files() const { return get_filter() == &layouts_; }

 private:
  void add_filters() {
    layouts_.set_name(_("Zemblar Layout (*.zblt)"));
    layouts_.add_pattern("*.zblt");
    everything_.set_name(_("All Files (*.*)"));
    everything_.add_pattern("*");
    add_filter(layouts_);
    add_filter(everything_);
  }

  Gtk::FileFilter layouts_;
  Gtk::FileFilter everything_;
  ScopedConnection layout_ended_;
};

void open_layout(Layout& /*current*/) {
  std::string path;
  {
    LayoutChooser chooser(_("Open"), Gtk::FILE_CHOOSER_ACTION_OPEN, Gtk::Stock::OPEN);
    if (!chooser.choose()) return;
    path = chooser.get_filename();
  }
  if (!path.empty()) open_as_chosen(path);
}

void save_layout(Layout& layout) {
  std::string uri;
  bool complete = false;
  {
    LayoutChooser chooser(_("Save As"), Gtk::FILE_CHOOSER_ACTION_SAVE, Gtk::Stock::SAVE);
    const auto file = layout.get_file();
    chooser.set_current_name(file ? Glib::filename_display_basename(file->get_path())
                                  : layout.get_name() + ".zblt");
    if (!chooser.choose()) return;
    uri = chooser.get_uri();
    complete = chooser.wants_layout_files();
  }
  if (!uri.empty()) layout.save_to(uri, complete);
}

/// Ends the editing of the tree cell whose editor contains the widget.
void finish_cell(Gtk::Widget* widget) {
  for (; widget; widget = widget->get_parent()) {
    auto* editor = dynamic_cast<Gtk::CellEditable*>(widget);
    if (!editor || !dynamic_cast<Gtk::TreeView*>(widget->get_parent())) continue;
    auto* const editable = editor->gobj();  // either call may destroy it
    g_object_ref(editable);
    gtk_cell_editable_editing_done(editable);
    gtk_cell_editable_remove_widget(editable);
    return g_object_unref(editable);
  }
}

/// Calls `visit` for each window. A call may destroy other windows, so references are held.
template <typename Visit>
void visit_windows(const Visit& visit) {
  auto* windows = gtk_window_list_toplevels();
  g_list_foreach(
      windows, [](gpointer window, gpointer) { g_object_ref(window); }, nullptr);
  for (auto* next = windows; next; next = next->next) visit(GTK_WINDOW(next->data));
  g_list_free_full(windows, g_object_unref);
}

// Applies text that is being typed. Normally a field does that when it loses the focus, but
// choosing a menu item or pressing a key does not move the focus.
void finish_edits() {
  visit_windows([](GtkWindow* window) {
    auto* focused = gtk_window_get_focus(window);
    auto* focus = focused ? Glib::wrap(focused) : nullptr;
    if (auto* number = dynamic_cast<Gtk::SpinButton*>(focus)) number->update();
    if (auto* name = dynamic_cast<NameEntry*>(focus)) name->finish();
    if (auto* host = dynamic_cast<HostEntry*>(focus)) host->finish();
    finish_cell(focus);
  });
}

}  // namespace

void install_layout_dialogs() {
  Layout::dialogs() = {.finish_edits = finish_edits, .open = open_layout, .save_as = save_layout};
}

void open_as_chosen(const std::string& path) {
  when_trains_stand([path] {
    if (Layout::open(path)) GlobalOptions::get().set_layout(path);
  });
}

void close_dialogs() {
  visit_windows([](GtkWindow* window) {
    if (!GTK_IS_DIALOG(window) || !gtk_widget_get_visible(GTK_WIDGET(window))) return;
    gtk_dialog_response(GTK_DIALOG(window), GTK_RESPONSE_DELETE_EVENT);
  });
}

}  // namespace zemblar

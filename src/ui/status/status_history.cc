#include "ui/status/status_history.h"

#include <gdk/gdkkeysyms.h>
#include <glibmm/datetime.h>
#include <glibmm/main.h>
#include <gtkmm/cellrenderertext.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include "core/i18n.h"
#include "core/status.h"
#include "ui/toolkit/close_key.h"
#include "ui/toolkit/type_size.h"

namespace zemblar {
namespace {

constexpr int default_width = 720;
constexpr int default_height = 360;
constexpr int margin = 6;

StatusHistory* the_window = nullptr;

struct Columns : Gtk::TreeModelColumnRecord {
  Columns() {
    add(time);
    add(text);
  }
  Gtk::TreeModelColumn<Glib::ustring> time;
  Gtk::TreeModelColumn<Glib::ustring> text;
};

const Columns& columns() {
  static const Columns the_columns;
  return the_columns;
}

Glib::ustring display_time(std::chrono::system_clock::time_point time) {
  return Glib::DateTime::create_now_local(std::chrono::system_clock::to_time_t(time)).format("%X");
}

void append_column(Gtk::TreeView& list, const Glib::ustring& title,
                   const Gtk::TreeModelColumn<Glib::ustring>& text, int wrap_width) {
  auto* cell = Gtk::manage(new Gtk::CellRendererText);
  cell->property_yalign() = 0;
  if (wrap_width > 0) {
    cell->property_wrap_width() = wrap_width;
    cell->property_wrap_mode() = Pango::WRAP_WORD_CHAR;
  }
  auto* column = Gtk::manage(new Gtk::TreeViewColumn(title, *cell));
  column->add_attribute(cell->property_text(), text);
  list.append_column(*column);
}

}  // namespace

void StatusHistory::open() {
  if (!the_window) the_window = new StatusHistory;
  the_window->present();
}

StatusHistory::StatusHistory() : rows_(Gtk::ListStore::create(columns())), list_(rows_) {
  set_title(_("Messages"));
  close_by_key(*this);
  set_border_width(margin);
  set_size_for_type(*this, default_width, default_height);
  constexpr int time_width = 100;
  append_column(list_, _("Time"), columns().time, 0);
  append_column(list_, _("Message"), columns().text,
                for_type(list_, default_width - time_width - 4 * margin));
  list_.get_accessible()->set_name(_("Messages"));
  list_.set_rules_hint();
  list_.set_enable_search(false);  // see ObjectList
  auto* scrolled = Gtk::manage(new Gtk::ScrolledWindow);
  scrolled->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  scrolled->set_shadow_type(Gtk::SHADOW_IN);
  scrolled->add(list_);
  add(*scrolled);
  scrolled->show_all();
  signal_status_changed().connect(sigc::mem_fun(*this, &StatusHistory::refresh));
  refresh();
}

// Keeps the existing rows, so that the list does not scroll while somebody reads it. The newest row
// may have a new time.
void StatusHistory::refresh() {
  const auto& history = status_history();
  auto rows = rows_->children();
  if (newest_ == 0) rows_->clear();
  if (history.empty()) (*rows_->append())[columns().text] = _("Nothing has been told yet.");
  for (auto told = history.rbegin(); told != history.rend(); ++told) {
    if (told->number < newest_) continue;
    const auto row = told->number == newest_ ? *rows.begin() : *rows_->prepend();
    row[columns().time] = display_time(told->time);
    row[columns().text] = told->text;
  }
  if (!history.empty()) newest_ = history.front().number;
  while (rows.size() > status_history_length) rows_->erase(--rows.end());
}

bool StatusHistory::on_key_press_event(GdkEventKey* event) {
  if (event->keyval != GDK_KEY_Escape) return Gtk::Window::on_key_press_event(event);
  hide();
  return true;
}

void StatusHistory::on_hide() {
  Gtk::Window::on_hide();
  if (the_window == this) the_window = nullptr;
  Glib::signal_idle().connect_once([this] { delete this; });
}

}  // namespace zemblar

#include "ui/scripts/script_editor.h"

#include <gdk/gdkkeysyms.h>
#include <gdkmm/cursor.h>
#include <glibmm/main.h>
#include <gtkmm/buttonbox.h>
#include <gtkmm/image.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/stock.h>

#include <algorithm>
#include <functional>
#include <map>

#include "core/i18n.h"
#include "core/status.h"
#include "scripts/script.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/type_size.h"

namespace zemblar {
namespace {

constexpr int margin = 12;
constexpr int gap = 6;
constexpr int width = 700;
constexpr int height = 400;

template <typename Act>
void with_place(Script& script, const ScriptLine* line, const Act& act) {
  if (const auto* event = dynamic_cast<const ScriptEvent*>(line)) {
    act(script.find_condition(event), script.get_num_conditions(), &Script::remove_condition,
        &Script::move_condition);
  } else if (const auto* command = dynamic_cast<const ScriptCommand*>(line)) {
    act(script.find_command(command), script.get_num_commands(), &Script::remove_command,
        &Script::move_command);
  }
}

}  // namespace

ScriptEditor::ScriptEditor(Script& script)
    : script_(&script),
      rows_(script),
      notes_(script),
      column_(_("Event/Command")),
      list_(rows_.store()),
      line_menu_([this] { return selected(); }, [this] { remove_selected(); },
                 [this](ScriptLine& line) { select(line); }),
      up_(Gtk::Stock::GO_UP),
      down_(Gtk::Stock::GO_DOWN),
      delete_(_("Delete")),
      why_not_(_("_Why Not?"), true),
      close_(Gtk::Stock::CLOSE) {
  set_title(_("Script Editor"));
  set_border_width(margin);
  set_size_for_type(*this, width, height);
  add_columns();
  build();
  connect();
  follow_name();
  list_.set_cursor(Gtk::TreePath("0"));
  list_.grab_focus();
}

// --- Building ---

void ScriptEditor::add_columns() {
  const auto& columns = ScriptRows::columns();
  column_.pack_start(cell_, true);
  column_.add_attribute(cell_.property_type(), columns.type);
  column_.add_attribute(cell_.property_script(), columns.script);
  column_.add_attribute(cell_.property_script_line(), columns.line);
  column_.add_attribute(cell_.property_refresh(), columns.refresh);
  // Invisible: the text of the row for screen readers.
  column_.pack_start(spoken_, false);
  column_.add_attribute(spoken_.property_text(), columns.text);
  spoken_.property_visible() = false;
  list_.append_column(column_);
  list_.set_headers_visible(false);
  list_.set_rules_hint();
  list_.set_show_expanders(false);
  list_.set_enable_search(false);
  list_.set_has_tooltip();
  list_.get_accessible()->set_name(_("Event/Command"));
}

void ScriptEditor::build() {
  auto* scrolled = Gtk::manage(new Gtk::ScrolledWindow);
  scrolled->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  scrolled->set_shadow_type(Gtk::SHADOW_IN);
  scrolled->add(list_);
  auto* middle = Gtk::manage(new Gtk::HBox(false, margin));
  middle->pack_start(*scrolled, true, true);
  middle->pack_start(make_side_buttons(), false, false);
  for (auto* label : {&name_, &hint_}) label->set_alignment(0, 0.5);
  name_.set_ellipsize(Pango::ELLIPSIZE_END);
  // Always two lines high, so that the height of the list does not change.
  hint_.set_line_wrap();
  hint_.set_text("\n");
  int window_width = 0;
  int window_height = 0;
  get_default_size(window_width, window_height);
  hint_.set_size_request(window_width - 2 * margin, hint_.size_request().height);
  hint_.set_alignment(0, 0);
  auto* all = Gtk::manage(new Gtk::VBox(false, gap));
  all->pack_start(name_, false, false);
  all->pack_start(*middle, true, true);
  all->pack_start(hint_, false, false);
  all->pack_start(make_bottom_buttons(), false, false);
  add(*all);
  all->show_all();
}

Gtk::Widget& ScriptEditor::make_side_buttons() {
  auto* box = Gtk::manage(new Gtk::VButtonBox(Gtk::BUTTONBOX_START, gap));
  box->pack_start(up_);
  box->pack_start(down_);
  up_.set_tooltip_text(_("Move the line up (Alt+Up)"));
  down_.set_tooltip_text(_("Move the line down (Alt+Down)"));
  return *box;
}

Gtk::Widget& ScriptEditor::make_bottom_buttons() {
  auto* box = Gtk::manage(new Gtk::HButtonBox(Gtk::BUTTONBOX_END, gap));
  delete_.set_image(*Gtk::manage(new Gtk::Image(Gtk::Stock::DELETE, Gtk::ICON_SIZE_BUTTON)));
  delete_.set_tooltip_text(_("Remove the line from the script (Delete)"));
  box->pack_start(delete_);
  why_not_.set_tooltip_text(
      _("Says beside each condition whether it holds now, and for which block and locomotive"));
  box->pack_start(why_not_);
  box->pack_start(close_);
  box->set_child_secondary(delete_);
  return *box;
}

void ScriptEditor::connect() {
  list_.signal_button_press_event().connect(sigc::mem_fun(*this, &ScriptEditor::on_list_pressed),
                                            false);
  list_.signal_motion_notify_event().connect(sigc::mem_fun(*this, &ScriptEditor::on_list_moved),
                                             false);
  list_.signal_key_press_event().connect(sigc::mem_fun(*this, &ScriptEditor::on_list_key), false);
  list_.signal_query_tooltip().connect(sigc::mem_fun(*this, &ScriptEditor::on_list_tooltip));
  list_.signal_cursor_changed().connect(sigc::mem_fun(*this, &ScriptEditor::follow_cursor));
  list_.get_selection()->signal_changed().connect(
      sigc::mem_fun(*this, &ScriptEditor::follow_selection));
  rows_.signal_removing().connect(sigc::mem_fun(cell_, &CRScript::let_go));
  rows_.signal_refreshed().connect(sigc::mem_fun(*this, &ScriptEditor::keep_chosen));
  rows_.signal_refreshed().connect(sigc::mem_fun(*this, &ScriptEditor::follow_selection));
  cell_.signal_line_added().connect(sigc::mem_fun(*this, &ScriptEditor::on_line_added));
  cell_.set_notes([this](const ScriptLine* line) { return notes_.of(line); });
  notes_.signal_changed().connect(sigc::mem_fun(*this, &ScriptEditor::follow_selection));
  why_not_.signal_toggled().connect([this] { notes_.set_asking(why_not_.get_active()); });
  up_.signal_clicked().connect([this] { move_selected(-1); });
  down_.signal_clicked().connect([this] { move_selected(1); });
  delete_.signal_clicked().connect(sigc::mem_fun(*this, &ScriptEditor::remove_selected));
  close_.signal_clicked().connect(sigc::mem_fun(*this, &ScriptEditor::hide));
  renamed_ = script_->property_name().signal_changed().connect([this] { follow_name(); });
  deleted_ = script_->signal_deleted().connect([this] { on_script_deleted(); });
}

// Moves the focus, which applies the value being edited. Deletes the window later, because the
// click on its close button is still being handled.
void ScriptEditor::on_hide() {
  if (is_editing()) list_.grab_focus();
  Gtk::Window::on_hide();
  Glib::signal_idle().connect_once([this] { delete this; });
}

// Removing the rows cancels the editing while the lines still exist.
void ScriptEditor::on_script_deleted() {
  cell_.close_menu();
  line_menu_.close();
  open_menu_.disconnect();
  notes_.stop();
  rows_.clear();
  hide();
}

// --- Pointer ---

Gtk::TreeIter ScriptEditor::row_at(int x, int y, int& cell_x) {
  Gtk::TreePath path;
  Gtk::TreeViewColumn* column = nullptr;
  int cell_y = 0;
  if (!list_.get_path_at_pos(x, y, path, column, cell_x, cell_y)) return {};
  return rows_.store()->get_iter(path);
}

// Selects the row and takes the focus, so that the first press edits: the toolkit would only select
// the row with the first press. Moving the focus also ends editing elsewhere.
bool ScriptEditor::on_list_pressed(GdkEventButton* event) {
  if (event->window != list_.get_bin_window()->gobj() || event->type != GDK_BUTTON_PRESS) {
    return false;
  }
  list_.grab_focus();
  int cell_x = 0;
  const auto row = row_at(static_cast<int>(event->x), static_cast<int>(event->y), cell_x);
  if (!row) return false;
  list_.set_cursor(rows_.store()->get_path(row));
  if (event->button != 3) return false;
  line_menu_.pop_up(*event);
  return true;
}

bool ScriptEditor::on_list_moved(GdkEventMotion* event) {
  if (event->window != list_.get_bin_window()->gobj()) return false;
  int cell_x = 0;
  const auto row = row_at(static_cast<int>(event->x), static_cast<int>(event->y), cell_x);
  bool over_link = false;
  if (row) {
    show_cell(row);
    over_link = cell_.arg_at(list_, cell_x).has_value();
  }
  if (over_link) {
    list_.get_bin_window()->set_cursor(Gdk::Cursor(Gdk::HAND2));
  } else {
    list_.get_bin_window()->set_cursor();
  }
  return false;
}

bool ScriptEditor::on_list_tooltip(int x, int y, bool keyboard,
                                   const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
  Gtk::TreeIter row;
  if (!list_.get_tooltip_context_iter(x, y, keyboard, row) || !row) return false;
  const auto reason = ScriptRows::at(*row).asleep_because();
  if (reason.empty()) return false;
  tooltip->set_text(reason);
  list_.set_tooltip_row(tooltip, rows_.store()->get_path(row));
  return true;
}

/// Sets the renderer's properties to the values of a row.
void ScriptEditor::show_cell(const Gtk::TreeIter& row) {
  column_.cell_set_cell_data(rows_.store(), row, false, false);
}

// --- Keys ---

bool ScriptEditor::is_editing() {
  auto* focus = get_focus();
  return focus && focus->is_ancestor(list_);
}

bool ScriptEditor::on_key_press_event(GdkEventKey* event) {
  const auto modifiers = event->state & gtk_accelerator_get_default_mod_mask();
  if (modifiers == GDK_CONTROL_MASK && event->keyval == GDK_w) {
    hide();
    return true;
  }
  return step_back(*event) || Gtk::Window::on_key_press_event(event);
}

bool ScriptEditor::step_back(const GdkEventKey& event) {
  const auto modifiers = event.state & gtk_accelerator_get_default_mod_mask();
  const bool shifted = modifiers == (GDK_CONTROL_MASK | GDK_SHIFT_MASK);
  const auto key = gdk_keyval_to_lower(event.keyval);
  const bool undo = modifiers == GDK_CONTROL_MASK && key == GDK_z;
  const bool redo = shifted ? key == GDK_z : modifiers == GDK_CONTROL_MASK && key == GDK_y;
  auto* history = undo || redo ? EditHistory::of(*this) : nullptr;
  if (!history) return false;
  undo ? history->undo() : history->redo();
  return true;
}

// Keys that an open editor does not handle arrive here as well; these must not act on the rows.
bool ScriptEditor::on_list_key(GdkEventKey* event) {
  const auto modifiers = event->state & gtk_accelerator_get_default_mod_mask();
  if (is_editing()) return on_editor_key(event->keyval);
  if (modifiers == GDK_MOD1_MASK) return on_move_key(event->keyval);
  if (event->keyval == GDK_Menu || (modifiers == GDK_SHIFT_MASK && event->keyval == GDK_F10)) {
    show_line_menu();
    return true;
  }
  if (modifiers != 0) return line_menu_.on_key(*event);
  switch (event->keyval) {
    case GDK_Left:
    case GDK_KP_Left:
      choose_next(-1);
      return true;
    case GDK_Right:
    case GDK_KP_Right:
      choose_next(1);
      return true;
    case GDK_Return:
    case GDK_KP_Enter:
    case GDK_ISO_Enter:
    case GDK_space:
    case GDK_KP_Space:
    case GDK_F2:
      edit_chosen();
      return true;
    case GDK_Delete:
    case GDK_KP_Delete:
      remove_selected();
      return true;
    default:
      return false;
  }
}

// Arrow keys move between the radio buttons of an editor.
bool ScriptEditor::on_editor_key(guint key) {
  static const std::map<guint, Gtk::DirectionType> directions = {
      {GDK_Left, Gtk::DIR_LEFT},
      {GDK_Right, Gtk::DIR_RIGHT},
      {GDK_Up, Gtk::DIR_UP},
      {GDK_Down, Gtk::DIR_DOWN},
  };
  const auto found = directions.find(key);
  if (found != directions.end()) get_focus()->child_focus(found->second);
  return true;
}

bool ScriptEditor::on_move_key(guint key) {
  const bool up = key == GDK_Up || key == GDK_KP_Up;
  if (!up && key != GDK_Down && key != GDK_KP_Down) return false;
  move_selected(up ? -1 : 1);
  return true;
}

void ScriptEditor::show_line_menu() {
  const auto row = list_.get_selection()->get_selected();
  if (!row) return;
  Gdk::Rectangle area;
  list_.get_cell_area(rows_.store()->get_path(row), column_, area);
  int x = 0;
  int y = 0;
  list_.get_bin_window()->get_origin(x, y);
  line_menu_.pop_up({x + area.get_x(), y + area.get_y(), 1, area.get_height()});
}

void ScriptEditor::choose_next(int step) {
  const auto row = list_.get_selection()->get_selected();
  if (!row) return;
  const auto count = static_cast<int>(ScriptRows::at(*row).editable_args().size());
  const int next = std::clamp(static_cast<int>(cell_.chosen()) + step, 0, std::max(0, count - 1));
  cell_.choose(static_cast<unsigned>(next));
  list_.queue_draw();
}

void ScriptEditor::edit_chosen() {
  const auto row = list_.get_selection()->get_selected();
  if (!row) return;
  list_.set_cursor(rows_.store()->get_path(row), column_, cell_, true);
}

// --- Lines ---

ScriptRow ScriptEditor::selected() {
  const auto row = list_.get_selection()->get_selected();
  return row ? ScriptRows::at(*row) : ScriptRow{};
}

void ScriptEditor::select(const ScriptLine& line) {
  if (const auto row = rows_.find(line)) list_.set_cursor(rows_.store()->get_path(row));
}

// For a condition, opens the menu of its subject, as soon as the menu in which the condition was
// chosen is closed.
void ScriptEditor::on_line_added(ScriptLine& line) {
  const auto row = rows_.find(line);
  if (!row) return;
  list_.set_cursor(rows_.store()->get_path(row));
  show_next_entry(row);
  if (!dynamic_cast<ScriptEvent*>(&line)) return;
  const auto args = ScriptRows::at(*row).editable_args();
  cell_.choose(static_cast<unsigned>(std::ranges::find(args, 1U) - args.begin()));
  open_menu_ = Glib::signal_idle().connect([this] {
    edit_chosen();
    return false;
  });
}

// Scrolls to the entry below the line's list, which adds another line of that kind.
void ScriptEditor::show_next_entry(Gtk::TreeIter row) {
  while (row && ScriptRows::at(*row).line) ++row;
  if (row) list_.scroll_to_row(rows_.store()->get_path(row));
}

void ScriptEditor::remove_selected() {
  const auto row = list_.get_selection()->get_selected();
  if (!row || !script_) return;
  const auto path = rows_.store()->get_path(row);
  with_place(*script_, ScriptRows::at(*row).line, [this](int place, unsigned, auto remove, auto) {
    std::invoke(remove, *script_, static_cast<unsigned>(place));
  });
  if (script_) list_.set_cursor(path);
}

void ScriptEditor::move_selected(int step) {
  if (!script_) return;
  // The script ignores an invalid index, such as the one before the first.
  with_place(*script_, selected().line, [&](int place, unsigned, auto, auto move) {
    std::invoke(move, *script_, static_cast<unsigned>(place), static_cast<unsigned>(place + step));
  });
  follow_selection();
}

bool ScriptEditor::can_move(int step) {
  bool can = false;
  with_place(*script_, selected().line, [&](int place, unsigned count, auto, auto) {
    can = place + step >= 0 && place + step < static_cast<int>(count);
  });
  return can;
}

// --- Cursor and selection ---

// In another row the first argument gets selected.
void ScriptEditor::follow_cursor() {
  Gtk::TreePath path;
  Gtk::TreeViewColumn* column = nullptr;
  list_.get_cursor(path, column);
  if (path.empty() || (cursor_ && cursor_.get_path() == path)) return;
  cursor_ = Gtk::TreeRowReference(rows_.store(), path);
  cell_.choose(0);
}

// Undo replaces lines, which may remove the selected row; then selects the most similar one.
void ScriptEditor::keep_chosen() {
  if (!script_ || list_.get_selection()->get_selected()) return;
  list_.set_cursor(Gtk::TreePath(std::to_string(place_of_chosen())));
}

// The index of the row with the same sentence that is nearest to the former index; without one, the
// former index, or that of the last row.
int ScriptEditor::place_of_chosen() {
  const auto rows = rows_.store()->children();
  const int count = static_cast<int>(rows.size());
  int nearest = std::min(chosen_place_, count - 1);
  int least = count;
  for (int place = 0; const auto& row : rows) {
    const int distance = std::abs(place - chosen_place_);
    const bool same = row.get_value(ScriptRows::columns().text).raw() == chosen_text_.raw();
    if (same && distance < least) {
      least = distance;
      nearest = place;
    }
    ++place;
  }
  return nearest;
}

void ScriptEditor::follow_selection() {
  if (!script_) return;
  if (const auto chosen = list_.get_selection()->get_selected()) {
    chosen_place_ = rows_.store()->get_path(chosen)[0];
    chosen_text_ = chosen->get_value(ScriptRows::columns().text);
  }
  const auto row = selected();
  delete_.set_sensitive(row.line != nullptr);
  up_.set_sensitive(can_move(-1));
  down_.set_sensitive(can_move(1));
  auto reason = row.asleep_because();
  const auto note = row.line ? notes_.of(row.line).text : Glib::ustring();
  if (!note.empty()) reason = reason.empty() ? note : with_sentence(note, reason);
  hint_.set_text(reason.empty() ? hint() : reason);
  list_.queue_draw();
}

Glib::ustring ScriptEditor::hint() const {
  if (script_->get_num_conditions() == 0) {
    return _(
        "“Add Condition…” says when the script is to start, “Add Command…” what it then does.");
  }
  if (script_->has_only_off_conditions()) {
    return _("All conditions are switched off: the script never starts.");
  }
  return _("Click a coloured word to change it, or a line with the right button to copy it.");
}

void ScriptEditor::follow_name() {
  name_.set_markup("<b>" + Glib::Markup::escape_text(script_->get_name()) + "</b>");
}

}  // namespace zemblar

#include "ui/scripts/script_rows.h"

#include <glibmm/main.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/script.h"

namespace zemblar {

ScriptRows::Columns::Columns() {
  add(type);
  add(script);
  add(line);
  add(refresh);
  add(text);
}

const ScriptRows::Columns& ScriptRows::columns() {
  static const Columns columns;
  return columns;
}

ScriptRows::ScriptRows(Script& script)
    : script_(&script), store_(Gtk::TreeStore::create(columns())) {
  insert(ScriptRowType::add_condition, nullptr, 0);
  insert(ScriptRowType::add_command, nullptr, 1);
  for (unsigned i = 0; i < script.get_num_conditions(); ++i) {
    insert_line(*script.get_condition(i), i);
  }
  for (unsigned i = 0; i < script.get_num_commands(); ++i) {
    insert_line(*script.get_command(i), command_row(i));
  }
  connect();
}

void ScriptRows::connect() {
  const auto keep = [this](const sigc::connection& connection) {
    connections_.emplace_back(connection);
  };
  keep(script_->signal_condition_added().connect(
      [this](unsigned i) { insert_line(*script_->get_condition(i), i); }));
  keep(script_->signal_condition_removed().connect([this](unsigned i) { remove(i); }));
  keep(script_->signal_condition_moved().connect(
      [this](unsigned from, unsigned to) { move(from, to); }));
  keep(script_->signal_command_added().connect(
      [this](unsigned i) { insert_line(*script_->get_command(i), command_row(i)); }));
  keep(script_->signal_command_removed().connect([this](unsigned i) { remove(command_row(i)); }));
  keep(script_->signal_command_moved().connect(
      [this](unsigned from, unsigned to) { move(command_row(from), command_row(to)); }));
  keep(script_->signal_mode_changed().connect([this] { refresh_changed(); }));
  // Sentences contain names of objects.
  keep(Layout::get().signal_object_renamed().connect([this](Object*) { refresh_soon(); }));
}

void ScriptRows::clear() {
  connections_.clear();
  refresh_.disconnect();
  store_->clear();
  script_ = nullptr;
}

ScriptRow ScriptRows::at(const Gtk::TreeRow& row) {
  const auto& all = columns();
  return {row.get_value(all.type), row.get_value(all.script), row.get_value(all.line)};
}

Gtk::TreeIter ScriptRows::find(const ScriptLine& line) const {
  for (const auto& row : store_->children()) {
    if (row.get_value(columns().line) == &line) return row;
  }
  return {};
}

unsigned ScriptRows::command_row(unsigned index) const {
  unsigned conditions = 0;
  for (const auto& row : store_->children()) {
    if (row.get_value(columns().type) == ScriptRowType::add_condition) break;
    ++conditions;
  }
  return conditions + 1 + index;
}

void ScriptRows::insert(ScriptRowType type, ScriptLine* line, unsigned position) {
  const auto rows = store_->children();
  const auto row = position < rows.size() ? store_->insert(rows[position]) : store_->append();
  (*row)[columns().type] = type;
  (*row)[columns().script] = script_;
  (*row)[columns().line] = line;
  refresh(*row);
}

void ScriptRows::insert_line(ScriptLine& line, unsigned position) {
  insert(ScriptRowType::line, &line, position);
  line.signal_line_changed().connect(
      sigc::hide(sigc::bind(sigc::mem_fun(*this, &ScriptRows::refresh_line), &line)));
  if (auto* event = dynamic_cast<ScriptEvent*>(&line)) {
    event->signal_or_changed().connect(
        sigc::bind(sigc::mem_fun(*this, &ScriptRows::refresh_line), &line));
  }
  refresh_soon();
}

void ScriptRows::remove(unsigned position) {
  const auto row = store_->children()[position];
  signal_removing_.emit(row.get_value(columns().line));
  store_->erase(row);
  refresh_soon();
}

// Gtk::TreeStore::move moves a row before the given one.
void ScriptRows::move(unsigned from, unsigned to) {
  const auto rows = store_->children();
  store_->move(rows[from], rows[from < to ? to + 1 : to]);
  refresh_soon();
}

Glib::ustring ScriptRows::text_of(const Gtk::TreeRow& row) {
  const auto shown = at(row);
  const auto text = shown.sentence().text();
  return shown.is_off() ? Glib::ustring::compose(_("%1 (switched off)"), text) : text;
}

void ScriptRows::refresh(const Gtk::TreeRow& row) {
  row[columns().text] = text_of(row);
  row[columns().refresh] = row.get_value(columns().refresh) + 1;
}

void ScriptRows::refresh_line(ScriptLine* line) {
  if (const auto row = find(*line)) refresh(*row);
  signal_refreshed_.emit();
}

// Writes only changed rows, because writing a row ends its editor.
void ScriptRows::refresh_changed() {
  for (const auto& row : store_->children()) {
    if (text_of(row).raw() != row.get_value(columns().text).raw()) refresh(row);
  }
  signal_refreshed_.emit();
}

// Refreshes later, because a line being removed is still in the script when its row is removed, and
// the word before a condition depends on its index.
void ScriptRows::refresh_soon() {
  if (refresh_.connected()) return;
  refresh_ = Glib::signal_idle().connect(
      [this] {
        refresh_changed();
        return false;
      },
      Glib::PRIORITY_HIGH_IDLE);
}

}  // namespace zemblar

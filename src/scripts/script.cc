#include "scripts/script.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/alive_guard.h"
#include "core/document_class.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "scripts/script_context.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Script>("!script", Section::scripts));
const auto accepted_by_scripts = toplevel_accepts_class<Script>(Section::scripts);

template <typename T>
T* line_at(const std::vector<std::unique_ptr<T>>& lines, unsigned index) {
  return index < lines.size() ? lines[index].get() : nullptr;
}

template <typename T>
int place_of(const std::vector<std::unique_ptr<T>>& lines, const T* line) {
  const auto found = std::ranges::find(lines, line, &std::unique_ptr<T>::get);
  return found == lines.end() ? -1 : static_cast<int>(found - lines.begin());
}

template <typename T>
void move_line(std::vector<std::unique_ptr<T>>& lines, unsigned from, unsigned to) {
  auto line = std::move(lines[from]);
  lines.erase(lines.begin() + from);
  lines.insert(lines.begin() + to, std::move(line));
}

/// Removes the line. Handlers may have moved or removed it already.
template <typename T>
void end_line(std::vector<std::unique_ptr<T>>& lines, const T* line) {
  const auto place = place_of(lines, line);
  if (place >= 0) lines.erase(lines.begin() + place);
}

template <typename T>
bool can_move(const std::vector<std::unique_ptr<T>>& lines, unsigned from, unsigned to) {
  return from != to && from < lines.size() && to < lines.size();
}

}  // namespace

Script::Script() : Glib::ObjectBase("Script"), Object(_("Script %1")) {}

Script::Script(const YAML::Node& node) : Script() {
  load_identity(node);
  load_conditions(node);
  load_commands(node);
  // Also needed for a script that undo brings back.
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [] {
        signal_sleeping_changed().emit();
        return true;
      },
      *this));
}

// Ends the lines while the script still exists, because they give back the names that they have
// claimed.
Script::~Script() {
  commands.clear();
  conditions.clear();
}

void Script::on_deleted() {
  signal_sleeping_changed().emit();
}

void Script::set_while(bool on) {
  if (on == while_mode) return;
  before_change();
  while_mode = on;
  mode_changed_.emit();
}

// --- Conditions ---

void Script::adopt(ScriptEvent* line, std::size_t place) {
  conditions.emplace(conditions.begin() + static_cast<std::ptrdiff_t>(place), line);
  line->script_ = this;
  line->signal_changing().connect(sigc::mem_fun(*this, &Script::on_changing));
  line->signal_triggered().connect([this, line] {
    if (!line->is_off()) on_triggered();
  });
  line->signal_or_changed().connect([] { signal_sleeping_changed().emit(); });
  line->signal_line_changed().connect(sigc::hide(sigc::mem_fun(*this, &Script::on_line_changed)));
}

// Changes while a document is being emptied are no edits.
void Script::on_changing() {
  if (is_in_use()) before_change();
}

unsigned Script::add_condition(ScriptEvent* line) {
  before_change();
  const auto index = get_num_conditions();
  adopt(line, index);
  condition_added_.emit(index);
  signal_sleeping_changed().emit();
  return index;
}

void Script::remove_condition(unsigned index) {
  if (index >= conditions.size()) return;
  before_change();
  const auto* line = get_condition(index);
  const AliveGuard alive(*this);
  condition_removed_.emit(index);
  if (!alive) return;
  end_line(conditions, line);
  on_line_changed();
}

void Script::move_condition(unsigned from, unsigned to) {
  if (!can_move(conditions, from, to)) return;
  before_change();
  move_line(conditions, from, to);
  condition_moved_.emit(from, to);
  signal_sleeping_changed().emit();
}

unsigned Script::get_num_conditions() const {
  return static_cast<unsigned>(conditions.size());
}

ScriptEvent* Script::get_condition(unsigned index) const {
  return line_at(conditions, index);
}

int Script::find_condition(const ScriptEvent* line) const {
  return place_of(conditions, line);
}

bool Script::has_only_off_conditions() const {
  return !conditions.empty() &&
         std::ranges::all_of(conditions, [](const auto& line) { return line->is_off(); });
}

bool Script::opens_alternative(const ScriptEvent& line) const {
  const auto place = find_condition(&line);
  if (place < 0) return false;
  for (auto i = static_cast<std::size_t>(place); i > 0; --i) {
    if (conditions[i]->get_or_flag()) return true;
    if (!conditions[i - 1]->is_off()) return false;
  }
  return true;
}

void Script::set_off(ScriptLine& line, bool off) {
  if (line.off_ == off) return;
  on_changing();
  line.off_ = off;
  const sigc::slot<void> announce =
      sigc::track_obj([&line] { line.signal_line_changed().emit(0); }, line);
  const AliveGuard alive(*this);
  if (find_condition(dynamic_cast<ScriptEvent*>(&line)) < 0) {
    announce_commands_changed();
  } else {
    finish_instances();
    if (alive) cancel_what_is_over();
  }
  if (alive) announce();
}

// A run of a "While" script that waits for a time, say, would otherwise go on without its
// condition.
void Script::cancel_what_is_over() {
  std::vector<Glib::RefPtr<Gio::Cancellable>> over;
  for (const auto& run : *runs_) {
    if (run.context && run.context->is_over()) over.push_back(run.context->cancellable);
  }
  for (const auto& run : over) run->cancel();
}

// --- Commands ---

void Script::adopt(ScriptCommand* line, std::size_t place) {
  commands.emplace(commands.begin() + static_cast<std::ptrdiff_t>(place), line);
  line->signal_changing().connect(sigc::mem_fun(*this, &Script::on_changing));
}

unsigned Script::add_command(ScriptCommand* line) {
  before_change();
  const auto index = get_num_commands();
  adopt(line, index);
  command_added_.emit(index);
  announce_commands_changed();
  return index;
}

// Cancels the runs before the line ends, because a run may be executing it.
void Script::remove_command(unsigned index) {
  if (index >= commands.size()) return;
  before_change();
  const auto* line = get_command(index);
  const AliveGuard alive(*this);
  command_removed_.emit(index);
  if (alive) announce_commands_changed();
  if (alive) end_line(commands, line);
}

void Script::move_command(unsigned from, unsigned to) {
  if (!can_move(commands, from, to)) return;
  before_change();
  move_line(commands, from, to);
  command_moved_.emit(from, to);
  announce_commands_changed();
}

// Cancelled runs take back their temporary changes here, and a handler of that may end this script.
void Script::announce_commands_changed() {
  const bool ends_runs = num_runs() != 0;
  const AliveGuard alive(*this);
  commands_changed_.emit();
  if (!ends_runs || !alive) return;
  set_status(Glib::ustring::compose(
      _("“%1” was at work and has ended; it starts again when its condition returns."),
      get_name()));
}

unsigned Script::get_num_commands() const {
  return static_cast<unsigned>(commands.size());
}

ScriptCommand* Script::get_command(unsigned index) const {
  return line_at(commands, index);
}

int Script::find_command(const ScriptCommand* line) const {
  return place_of(commands, line);
}

// --- Variables ---

bool Script::add_variable(const Glib::ustring& name, int type) {
  if (type == 0) return false;
  const auto [entry, is_new] =
      variables.try_emplace(name.raw(), Variable{.users = 1, .type = type});
  if (is_new) return true;
  if (entry->second.type != type) return false;
  ++entry->second.users;
  return true;
}

void Script::remove_variable(const Glib::ustring& name) {
  const auto entry = variables.find(name.raw());
  if (entry != variables.end() && --entry->second.users == 0) variables.erase(entry);
}

std::vector<Glib::ustring> Script::get_variables(int type) const {
  std::vector<Glib::ustring> names;
  for (const auto& [name, variable] : variables) {
    if (type == 0 || variable.type == type) names.emplace_back(name);
  }
  return names;
}

}  // namespace zemblar

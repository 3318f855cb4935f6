// Reading, writing and restoring scripts.

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

constexpr auto conditions_key = "conditions";
constexpr auto commands_key = "commands";

constexpr auto when_word = "When";
constexpr auto while_word = "While";
constexpr auto and_word = "And";
constexpr auto or_word = "Or";

// Keys of the private form. A layout file has only one word, that of the first condition, for both.
constexpr auto mode_key = "while";
constexpr auto first_or_key = "first-or";

// Behind the arguments of a line that is switched off stands `{off: true}`.
constexpr auto off_key = "off";

/// What the entry of a line has before its arguments.
constexpr std::size_t condition_head = 2;
constexpr std::size_t command_head = 1;

/// The entry of a line as its kind reads it.
struct LineEntry {
  YAML::Node node;
  bool off = false;
};

/// No value for what is no line.
std::optional<LineEntry> line_entry(const YAML::Node& entry, std::size_t least) {
  if (!entry.IsSequence() || entry.size() < least) return std::nullopt;
  const auto last = entry[entry.size() - 1];
  if (entry.size() == least || !last.IsMap()) return LineEntry{.node = entry};
  LineEntry line;
  read_key(last, off_key, line.off);
  for (std::size_t i = 0; i + 1 < entry.size(); ++i) line.node.push_back(entry[i]);
  return line;
}

/// Each line as text, from its key on, switched off or not.
std::vector<std::string> texts_of(const YAML::Node& list, std::size_t head) {
  std::vector<std::string> texts;
  for (const auto& entry : list) {
    const auto read = line_entry(entry, head);
    YAML::Node line(YAML::NodeType::Sequence);
    for (auto i = head - 1; i < read->node.size(); ++i) line.push_back(read->node[i]);
    texts.push_back(YAML::Dump(line));
  }
  return texts;
}

bool is_mode(const std::string& word) {
  return word == when_word || word == while_word;
}

/// The list under a key; empty when it is missing.
YAML::Node list_at(const YAML::Node& entry, const char* key) {
  const auto list = entry[key];
  if (!list || list.IsNull()) return YAML::Node(YAML::NodeType::Sequence);
  if (!list.IsSequence()) throw YAML::InvalidScalar(list.Mark());
  return list;
}

/// The functions that edit a list of lines.
struct ListEdit {
  std::function<void(unsigned index)> remove;
  std::function<void(unsigned from, unsigned to)> move;
  /// With `replaces`, the new line replaces the one at `index`.
  std::function<void(unsigned index, bool replaces)> insert;
};

/// Edits the lines `is` until they are equal to `wanted`. Lines with the same text are kept and
/// moved.
void rearrange(std::vector<std::string> is, const std::vector<std::string>& wanted,
               const ListEdit& edit) {
  for (unsigned i = 0; i < wanted.size(); ++i) {
    const auto place = is.begin() + i;
    if (const auto found = std::find(place, is.end(), wanted[i]); found != is.end()) {
      edit.move(static_cast<unsigned>(found - is.begin()), i);
      std::rotate(place, found, found + 1);
      continue;
    }
    const bool replaces =
        place != is.end() && std::find(wanted.begin() + i, wanted.end(), *place) == wanted.end();
    edit.insert(i, replaces);
    if (replaces) {
      *place = wanted[i];
    } else {
      is.insert(place, wanted[i]);
    }
  }
  for (auto i = is.size(); i > wanted.size(); --i) edit.remove(static_cast<unsigned>(i - 1));
}

}  // namespace

// --- Reading ---

// Both are null for what is no line, or of an unknown kind.
std::unique_ptr<ScriptEvent> Script::load_condition(const YAML::Node& entry) {
  const auto read = line_entry(entry, condition_head);
  if (!read) return nullptr;
  std::unique_ptr<ScriptEvent> line(load_script_event(scalar_of(read->node[1]), read->node));
  if (line) line->off_ = read->off;
  return line;
}

std::unique_ptr<ScriptCommand> Script::load_command(const YAML::Node& entry) {
  const auto read = line_entry(entry, command_head);
  if (!read) return nullptr;
  std::unique_ptr<ScriptCommand> line(
      load_script_command(scalar_of(read->node[0]), *this, read->node));
  if (line) line->off_ = read->off;
  return line;
}

void Script::load_conditions(const YAML::Node& node) {
  bool is_first = true;
  for (const auto& entry : list_at(node, conditions_key)) {
    if (!line_entry(entry, condition_head)) continue;
    const auto& word = scalar_of(entry[0]);
    if (std::exchange(is_first, false) && is_mode(word)) while_mode = word == while_word;
    auto line = load_condition(entry);
    if (!line) continue;
    line->or_flag_ = conditions.empty() || word == or_word;
    adopt(line.release(), conditions.size());
  }
  read_private(node, mode_key, while_mode);
  if (!conditions.empty()) read_private(node, first_or_key, conditions.front()->or_flag_);
}

void Script::load_commands(const YAML::Node& node) {
  for (const auto& entry : list_at(node, commands_key)) {
    auto line = load_command(entry);
    if (line) adopt(line.release(), commands.size());
  }
}

ScriptLine* Script::insert_lines(const YAML::Node& entry, const ScriptLine* before, bool wake) {
  std::vector<std::unique_ptr<ScriptEvent>> events;
  std::vector<std::unique_ptr<ScriptCommand>> cmds;
  std::optional<bool> mode;
  for (const auto& one : list_at(entry, conditions_key)) {
    auto line = load_condition(one);
    if (!line) throw YAML::InvalidScalar(one.Mark());
    const auto& word = scalar_of(one[0]);
    if (events.empty() && is_mode(word)) mode = word == while_word;
    line->or_flag_ = is_mode(word) || word == or_word;
    events.push_back(std::move(line));
  }
  for (const auto& one : list_at(entry, commands_key)) {
    auto line = load_command(one);
    if (!line) throw YAML::InvalidScalar(one.Mark());
    cmds.push_back(std::move(line));
  }
  if (events.empty() && cmds.empty()) return nullptr;
  ScriptLine* const first =
      events.empty() ? static_cast<ScriptLine*>(cmds.front().get()) : events.front().get();
  const auto place_of = [](int found, std::size_t count) {
    return found < 0 ? count : static_cast<std::size_t>(found);
  };
  const auto event_place =
      place_of(find_condition(dynamic_cast<const ScriptEvent*>(before)), conditions.size());
  const auto cmd_place =
      place_of(find_command(dynamic_cast<const ScriptCommand*>(before)), commands.size());
  before_change();
  if (mode && conditions.empty()) set_while(*mode);
  const bool arms = wake && !sleeps();
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (arms) arm_when_resolved(events[i].get());
    adopt(events[i].release(), event_place + i);
    condition_added_.emit(static_cast<unsigned>(event_place + i));
  }
  for (std::size_t i = 0; i < cmds.size(); ++i) {
    adopt(cmds[i].release(), cmd_place + i);
    command_added_.emit(static_cast<unsigned>(cmd_place + i));
  }
  signal_sleeping_changed().emit();
  if (!cmds.empty()) announce_commands_changed();
  return first;
}

// --- Writing ---

void Script::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("script") << YAML::BeginMap;
  save_identity(out);
  save_lines(out);
  write_private(out, mode_key, while_mode);
  if (!conditions.empty()) write_private(out, first_or_key, conditions.front()->or_flag_);
  out << YAML::EndMap;
}

void Script::save_lines(YAML::Emitter& out, const ScriptLine* only) const {
  const auto save_list = [&](const char* key, const auto& lines, const auto& save_head) {
    const auto is_saved = [only](const auto& line) { return !only || line.get() == only; };
    if (std::ranges::none_of(lines, is_saved)) return;
    out << YAML::Key << key << YAML::Value << YAML::BeginSeq;
    for (const auto& line : lines) {
      if (!is_saved(line)) continue;
      out << YAML::Flow << YAML::BeginSeq;
      save_head(*line);
      line->save(out);
      if (line->is_off()) {
        out << YAML::Flow << YAML::BeginMap << YAML::Key << off_key << YAML::Value << true
            << YAML::EndMap;
      }
      out << YAML::EndSeq;
    }
    out << YAML::EndSeq;
  };
  save_list(conditions_key, conditions, [&](const ScriptEvent& line) {
    const bool is_first = &line == conditions.front().get();
    const auto* first = only ? and_word : while_mode ? while_word : when_word;
    out << (is_first ? first : line.get_or_flag() ? or_word : and_word) << key_of(line);
  });
  save_list(commands_key, commands, [&](const ScriptCommand& line) { out << key_of(line); });
}

// --- Taking back ---

// Compares with the present lines, which may differ from those of the former entry.
void Script::restore(const EntryChange& change) {
  Object::restore(change);
  YAML::Emitter out;
  save(out);
  const auto now = YAML::Load(out.c_str());
  if (change.differs(conditions_key)) restore_conditions(now, change.entry());
  if (change.differs(commands_key)) restore_commands(now, change.entry());
  restore_mode(change);
}

// A condition that replaces an armed one is armed.
void Script::restore_conditions(const YAML::Node& now, const YAML::Node& entry) {
  const auto later = list_at(entry, conditions_key);
  rearrange(texts_of(list_at(now, conditions_key), condition_head), texts_of(later, condition_head),
            {[this](unsigned index) { remove_condition(index); },
             [this](unsigned from, unsigned to) { move_condition(from, to); },
             [&](unsigned index, bool replaces) {
               const bool arm = replaces && get_condition(index)->is_awake();
               if (replaces) remove_condition(index);
               insert_condition(index, later[index], arm);
             }});
  restore_words(later);
  for (unsigned i = 0; i < later.size() && i < conditions.size(); ++i) {
    set_off(*conditions[i], line_entry(later[i], condition_head)->off);
  }
}

void Script::restore_mode(const EntryChange& change) {
  change.read<bool>(mode_key, [this](bool on) { set_while(on); });
  if (conditions.empty() || !(change.differs(conditions_key) || change.differs(first_or_key)))
    return;
  bool is_or = conditions.front()->get_or_flag();
  read_private(change.entry(), first_or_key, is_or);
  conditions.front()->set_or_flag(is_or);
}

void Script::insert_condition(unsigned index, const YAML::Node& entry, bool arm) {
  auto* line = load_condition(entry).release();
  if (arm) arm_when_resolved(line);
  move_condition(add_condition(line), index);
}

void Script::arm_when_resolved(ScriptEvent* line) {
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [line] {
        line->arm();
        return true;
      },
      *line));
}

void Script::restore_words(const YAML::Node& list) {
  for (unsigned i = 1; i < list.size() && i < conditions.size(); ++i) {
    conditions[i]->set_or_flag(list[i][0].Scalar() == or_word);
  }
}

void Script::restore_commands(const YAML::Node& now, const YAML::Node& entry) {
  const auto later = list_at(entry, commands_key);
  rearrange(texts_of(list_at(now, commands_key), command_head), texts_of(later, command_head),
            {[this](unsigned index) { remove_command(index); },
             [this](unsigned from, unsigned to) { move_command(from, to); },
             [&](unsigned index, bool replaces) {
               if (replaces) remove_command(index);
               move_command(add_command(load_command(later[index]).release()), index);
             }});
  for (unsigned i = 0; i < later.size() && i < commands.size(); ++i) {
    set_off(*commands[i], line_entry(later[i], command_head)->off);
  }
}

}  // namespace zemblar

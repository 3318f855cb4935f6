// Reading, writing and restoring scripts.

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <functional>
#include <string>

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

constexpr auto when_word = "When";
constexpr auto while_word = "While";
constexpr auto and_word = "And";
constexpr auto or_word = "Or";

// Keys of the private form. A layout file has only one word, that of the first condition, for both.
constexpr auto mode_key = "while";
constexpr auto first_or_key = "first-or";

bool is_line(const YAML::Node& entry, std::size_t least) {
  return entry.IsSequence() && entry.size() >= least;
}

/// The list under a key; empty when it is missing.
YAML::Node list_at(const YAML::Node& entry, const char* key) {
  const auto list = entry[key];
  if (!list || list.IsNull()) return YAML::Node(YAML::NodeType::Sequence);
  if (!list.IsSequence()) throw YAML::InvalidScalar(list.Mark());
  return list;
}

/// Each line as text, from its key on.
std::vector<std::string> texts_of(const YAML::Node& list, std::size_t key_place) {
  std::vector<std::string> texts;
  for (const auto& entry : list) {
    YAML::Node line(YAML::NodeType::Sequence);
    for (auto i = key_place; i < entry.size(); ++i) line.push_back(entry[i]);
    texts.push_back(YAML::Dump(line));
  }
  return texts;
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

void Script::load_conditions(const YAML::Node& node) {
  bool is_first = true;
  for (const auto& entry : list_at(node, "conditions")) {
    if (!is_line(entry, 2)) continue;
    const auto& word = scalar_of(entry[0]);
    if (std::exchange(is_first, false) && (word == when_word || word == while_word)) {
      while_mode = word == while_word;
    }
    auto* line = load_script_event(scalar_of(entry[1]), entry);
    if (!line) continue;
    line->or_flag_ = conditions.empty() || word == or_word;
    adopt(line);
  }
  read_private(node, mode_key, while_mode);
  if (!conditions.empty()) read_private(node, first_or_key, conditions.front()->or_flag_);
}

void Script::load_commands(const YAML::Node& node) {
  for (const auto& entry : list_at(node, "commands")) {
    if (!is_line(entry, 1)) continue;
    auto* line = load_script_command(scalar_of(entry[0]), *this, entry);
    if (line) adopt(line);
  }
}

// --- Writing ---

void Script::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("script") << YAML::BeginMap;
  save_identity(out);
  if (!conditions.empty()) save_conditions(out);
  if (!commands.empty()) save_commands(out);
  write_private(out, mode_key, while_mode);
  if (!conditions.empty()) write_private(out, first_or_key, conditions.front()->or_flag_);
  out << YAML::EndMap;
}

void Script::save_conditions(YAML::Emitter& out) const {
  out << YAML::Key << "conditions" << YAML::Value << YAML::BeginSeq;
  for (const auto& line : conditions) {
    const auto* word = line == conditions.front() ? (while_mode ? while_word : when_word)
                       : line->get_or_flag()      ? or_word
                                                  : and_word;
    out << YAML::Flow << YAML::BeginSeq << word << key_of(*line);
    line->save(out);
    out << YAML::EndSeq;
  }
  out << YAML::EndSeq;
}

void Script::save_commands(YAML::Emitter& out) const {
  out << YAML::Key << "commands" << YAML::Value << YAML::BeginSeq;
  for (const auto& line : commands) {
    out << YAML::Flow << YAML::BeginSeq << key_of(*line);
    line->save(out);
    out << YAML::EndSeq;
  }
  out << YAML::EndSeq;
}

// --- Taking back ---

// Compares with the present lines, which may differ from those of the former entry.
void Script::restore(const EntryChange& change) {
  Object::restore(change);
  YAML::Emitter out;
  save(out);
  const auto now = YAML::Load(out.c_str());
  if (change.differs("conditions")) restore_conditions(now, change.entry());
  if (change.differs("commands")) restore_commands(now, change.entry());
  restore_mode(change);
}

// A condition that replaces an armed one is armed.
void Script::restore_conditions(const YAML::Node& now, const YAML::Node& entry) {
  const auto later = list_at(entry, "conditions");
  rearrange(texts_of(list_at(now, "conditions"), 1), texts_of(later, 1),
            {[this](unsigned index) { remove_condition(index); },
             [this](unsigned from, unsigned to) { move_condition(from, to); },
             [&](unsigned index, bool replaces) {
               const bool arm = replaces && get_condition(index)->is_awake();
               if (replaces) remove_condition(index);
               insert_condition(index, later[index], arm);
             }});
  restore_words(later);
}

void Script::restore_mode(const EntryChange& change) {
  change.read<bool>(mode_key, [this](bool on) { set_while(on); });
  if (conditions.empty() || !(change.differs("conditions") || change.differs(first_or_key))) return;
  bool is_or = conditions.front()->get_or_flag();
  read_private(change.entry(), first_or_key, is_or);
  conditions.front()->set_or_flag(is_or);
}

// Arms the line after its references have been resolved.
void Script::insert_condition(unsigned index, const YAML::Node& entry, bool arm) {
  auto* line = load_script_event(scalar_of(entry[1]), entry);
  move_condition(add_condition(line), index);
  if (!arm) return;
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
  const auto later = list_at(entry, "commands");
  rearrange(texts_of(list_at(now, "commands"), 0), texts_of(later, 0),
            {[this](unsigned index) { remove_command(index); },
             [this](unsigned from, unsigned to) { move_command(from, to); },
             [&](unsigned index, bool replaces) {
               if (replaces) remove_command(index);
               const auto line_entry = later[index];
               auto* line = load_script_command(scalar_of(line_entry[0]), *this, line_entry);
               move_command(add_command(line), index);
             }});
}

}  // namespace zemblar

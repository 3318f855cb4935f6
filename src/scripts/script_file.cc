// Scripts in a layout file, and how an edit of one is taken back.

#include <yaml-cpp/yaml.h>

#include <string>

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

constexpr auto when_word = "When";
constexpr auto while_word = "While";
constexpr auto and_word = "And";
constexpr auto or_word = "Or";

bool is_line(const YAML::Node& entry, std::size_t least) {
  return entry.IsSequence() && entry.size() >= least;
}

/// The list under a key; an empty one when it is missing.
YAML::Node list_at(const YAML::Node& entry, const char* key) {
  const auto list = entry[key];
  return list ? list : YAML::Node(YAML::NodeType::Sequence);
}

/// What each line says, without the elements before its key.
std::vector<std::string> texts_of(const YAML::Node& list, std::size_t key_place) {
  std::vector<std::string> texts;
  for (const auto& entry : list) {
    YAML::Node line(YAML::NodeType::Sequence);
    for (auto i = key_place; i < entry.size(); ++i) line.push_back(entry[i]);
    texts.push_back(YAML::Dump(line));
  }
  return texts;
}

/// Where two lists differ: from `first` on, so many lines in the one and in the other.
struct Difference {
  unsigned first;
  unsigned former;
  unsigned later;
};

Difference difference(const std::vector<std::string>& former,
                      const std::vector<std::string>& later) {
  std::size_t first = 0;
  while (first < former.size() && first < later.size() && former[first] == later[first]) ++first;
  auto end = former.size();
  auto later_end = later.size();
  while (end > first && later_end > first && former[end - 1] == later[later_end - 1]) {
    --end;
    --later_end;
  }
  return {static_cast<unsigned>(first), static_cast<unsigned>(end - first),
          static_cast<unsigned>(later_end - first)};
}

}  // namespace

// --- Reading ---

void Script::load_conditions(const YAML::Node& list) {
  bool is_first = true;
  for (const auto& entry : list) {
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
}

void Script::load_commands(const YAML::Node& list) {
  for (const auto& entry : list) {
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

void Script::restore(const EntryChange& change) {
  Object::restore(change);
  if (change.differs("conditions")) restore_conditions(change);
  if (change.differs("commands")) restore_commands(change);
}

// Lines that stay go on watching. One that takes the place of another watches as that one did, when
// what it names has been looked up.
void Script::restore_conditions(const EntryChange& change) {
  const auto later = list_at(change.entry(), "conditions");
  const auto [first, former, latter] =
      difference(texts_of(list_at(change.former(), "conditions"), 1), texts_of(later, 1));
  std::vector<bool> armed;
  for (unsigned i = 0; i < former; ++i) {
    const auto* line = get_condition(first);
    armed.push_back(line && line->is_armed());
    remove_condition(first);
  }
  for (unsigned i = 0; i < latter; ++i) {
    insert_condition(first + i, later[first + i], i < armed.size() && armed[i]);
  }
  restore_words(later);
}

void Script::insert_condition(unsigned index, const YAML::Node& entry, bool arm) {
  auto* line = load_script_event(scalar_of(entry[1]), entry);
  if (!line) return;
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
  if (list.size() != 0) set_while(list[0][0].Scalar() == while_word);
  for (unsigned i = 1; i < list.size() && i < conditions.size(); ++i) {
    conditions[i]->set_or_flag(list[i][0].Scalar() == or_word);
  }
}

void Script::restore_commands(const EntryChange& change) {
  const auto later = list_at(change.entry(), "commands");
  const auto [first, former, latter] =
      difference(texts_of(list_at(change.former(), "commands"), 0), texts_of(later, 0));
  for (unsigned i = 0; i < former; ++i) remove_command(first);
  for (unsigned i = 0; i < latter; ++i) {
    const auto& entry = later[first + i];
    auto* line = load_script_command(scalar_of(entry[0]), *this, entry);
    if (line) move_command(add_command(line), first + i);
  }
}

}  // namespace zemblar

#include "ui/scripts/line_notes.h"

#include <glibmm/main.h>

#include <optional>
#include <utility>
#include <vector>

#include "core/i18n.h"
#include "locomotives/lok.h"
#include "scripts/condition_answers.h"
#include "scripts/script.h"
#include "scripts/script_context.h"
#include "track/block.h"

namespace zemblar {
namespace {

constexpr unsigned soon = 100;   // ms; runs come and go faster than anybody reads
constexpr unsigned often = 300;  // ms
constexpr std::size_t most_named = 3;

Glib::ustring name_of(const Block* block, const Lok* lok) {
  if (block && lok)
    return Glib::ustring::compose(_("%1 in %2"), lok->get_name(), block->get_name());
  if (block) return block->get_name();
  return lok ? lok->get_name() : Glib::ustring();
}

/// The first names, each once.
class Names {
 public:
  void add(const Glib::ustring& name) {
    if (name.empty()) return;
    if (++count_ <= most_named) text_ += (count_ == 1 ? "" : ", ") + name;
  }
  [[nodiscard]] Glib::ustring text() const {
    return count_ > most_named
               ? Glib::ustring::compose(_("%1 and %2 more"), text_, count_ - most_named)
               : text_;
  }

 private:
  std::size_t count_ = 0;
  Glib::ustring text_;
};

Glib::ustring answer_text(const Script& script, const ConditionAnswer& answer) {
  using Kind = ConditionAnswer::Kind;
  if (answer.kind == Kind::off) return {};
  if (answer.kind == Kind::fails) return _("✗ does not hold");
  if (answer.kind == Kind::fails_as_well) return "–";
  Names names;
  bool all_started = answer.completes;
  for (const auto& instance : answer.instances) {
    names.add(name_of(instance.block, instance.lok));
    all_started = all_started && script.has_started_for(instance);
  }
  auto text = "✓ " + (names.text().empty() ? Glib::ustring(_("holds")) : names.text());
  return all_started ? Glib::ustring::compose(_("%1 (has started)"), text) : text;
}

/// The condition of each instance for which all of an alternative hold.
std::map<EventInstance, const ScriptLine*> holding_lines(const Script& script) {
  std::map<EventInstance, const ScriptLine*> lines;
  const auto answers = ask_conditions(script);
  for (unsigned i = 0; i < answers.size(); ++i) {
    if (!answers[i].completes) continue;
    for (const auto& instance : answers[i].instances) lines[instance] = script.get_condition(i);
  }
  return lines;
}

}  // namespace

LineNotes::LineNotes(Script& script) : script_(&script) {
  runs_changed_ = script.signal_runs_changed().connect(sigc::mem_fun(*this, &LineNotes::look_soon));
  look();
}

void LineNotes::set_asking(bool on) {
  asking_.disconnect();
  if (on) {
    asking_ = Glib::signal_timeout().connect(
        [this] {
          look();
          return true;
        },
        often);
  }
  look();
}

void LineNotes::stop() {
  script_ = nullptr;
  runs_changed_.disconnect();
  soon_.disconnect();
  asking_.disconnect();
}

LineNote LineNotes::of(const ScriptLine* line) const {
  const auto found = notes_.find(line);
  return found == notes_.end() ? LineNote() : found->second;
}

void LineNotes::look_soon() {
  if (soon_.connected()) return;
  soon_ = Glib::signal_timeout().connect(
      [this] {
        look();
        return false;
      },
      soon);
}

void LineNotes::look() {
  if (!script_) return;
  std::map<const ScriptLine*, LineNote> notes;
  if (get_asking()) note_answers(notes);
  note_runs(notes);
  if (std::exchange(notes_, notes) != notes) signal_changed_.emit();
}

void LineNotes::note_runs(std::map<const ScriptLine*, LineNote>& notes) const {
  std::map<const ScriptLine*, Names> names;
  std::optional<std::map<EventInstance, const ScriptLine*>> holding;
  for (const auto& run : script_->runs()) {
    if (!run.context) continue;
    const ScriptLine* line = run.command;
    if (!line) {
      if (!holding) holding = holding_lines(*script_);
      line = (*holding)[run.context->instance];
    }
    if (!line) continue;
    notes[line].lamp = true;
    if (run.command) names[line].add(name_of(run.context->block(), run.context->lok()));
  }
  for (const auto& [line, found] : names) notes[line].text = found.text();
}

void LineNotes::note_answers(std::map<const ScriptLine*, LineNote>& notes) const {
  const auto answers = ask_conditions(*script_);
  for (unsigned i = 0; i < answers.size(); ++i) {
    notes[script_->get_condition(i)].text = answer_text(*script_, answers[i]);
  }
}

}  // namespace zemblar

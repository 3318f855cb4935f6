#include "scripts/script_event_lok_state.h"

#include <array>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "devices/decoder_update.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

using State = ScriptEventLokState::State;

void register_script_event_lok_state() {
  register_script_event<ScriptEventLokState>("lok_state", N_("Locomotive Is Held, Stands, Drives…"),
                                             MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_event_lok_state(), true);

constexpr auto any_word = "Any";
constexpr auto this_word = "This";

struct StateWords {
  State state;
  const char* word;  // in a layout file
  const char* text;
};
constexpr std::array<StateWords, 5> all_states{{
    {State::held, "held", N_("is held")},
    {State::standing, "standing", N_("is standing")},
    {State::driving, "driving", N_("is driving")},
    {State::lost, "lost", N_("has no place")},
    {State::here, "here", N_("is in This Block")},
}};

const StateWords& words_of(State state) {
  return all_states[static_cast<std::size_t>(state)];
}

State read_state(const YAML::Node& node) {
  for (const auto& known : all_states) {
    if (is_word(node, known.word)) return known.state;
  }
  throw YAML::InvalidScalar(node.Mark());
}

bool holds(State state, const Lok& lok, const Block* found) {
  const auto speed = lok.get_speed_overlay();
  const bool stands = lok.get_brake() || lok.get_emergency_stop() || speed == 0;
  switch (state) {
    case State::held:
      return lok.get_brake();
    case State::standing:
      return stands;
    case State::driving:
      return !stands;
    case State::lost:
      return !lok.front;
    case State::here:
      return found && lok.spans(found);
  }
  return false;
}

}  // namespace

ScriptEventLokState::ScriptEventLokState() {
  lok_.signal_changing().connect(signal_changing().make_slot());
  lok_.signal_changed().connect([this] { follow_subject(); });
}

ScriptEventLokState::ScriptEventLokState(const YAML::Node& entry) : ScriptEventLokState() {
  const auto subject = element(entry, 2);
  state_ = read_state(element(entry, 3));
  whose_ = is_word(subject, any_word)    ? Whose::any
           : is_word(subject, this_word) ? Whose::this_one
                                         : Whose::chosen;
  if (whose_ == Whose::chosen) lok_.load(subject);
}

void ScriptEventLokState::save(YAML::Emitter& out) const {
  if (whose_ == Whose::chosen) {
    out << static_cast<const Object*>(lok_.get_lok());
  } else {
    out << (whose_ == Whose::any ? any_word : this_word);
  }
  out << words_of(state_).word;
}

Glib::ustring ScriptEventLokState::get_format() const {
  return _("%1 %2");
}

std::vector<ScriptLine::Argument> ScriptEventLokState::arguments() {
  const auto subject = [this]() -> Glib::ustring {
    if (whose_ == Whose::any) return _("Any Locomotive");
    if (whose_ == Whose::this_one) return _("This Locomotive");
    return lok_.get_lok() ? lok_.get_lok()->get_name() : _("(No Locomotive Selected)");
  };
  const auto subjects = [this] {
    auto all = lok_choices([this](Lok* named) {
      return choice(
          named->get_name(), [this, named] { choose_subject(named, Whose::chosen); }, named);
    });
    all.push_back(choice(_("Any Locomotive"), [this] { choose_subject(nullptr, Whose::any); }));
    all.push_back(
        choice(_("This Locomotive"), [this] { choose_subject(nullptr, Whose::this_one); }));
    return all;
  };
  const auto states = [this] {
    std::vector<ScriptChoice> all;
    for (const auto& known : all_states) {
      all.push_back(choice(_(known.text), [this, &known] { choose_state(known.state); }));
    }
    return all;
  };
  return {{.type = ArgType::menu, .text = subject, .choices = subjects},
          {.type = ArgType::menu,
           .text = [this]() -> Glib::ustring { return _(words_of(state_).text); },
           .choices = states}};
}

void ScriptEventLokState::choose_subject(Lok* named, Whose whose) {
  if (named != lok_.get_lok() || whose != whose_) {
    signal_changing().emit();
    lok_.set_lok(named);
    whose_ = whose;
  }
  watch_chosen();
}

void ScriptEventLokState::choose_state(State state) {
  if (state == state_) return;
  signal_changing().emit();
  state_ = state;
  announce();
}

/// True if the condition is about a block or a locomotive that no line before it finds.
bool ScriptEventLokState::lacks_lines_before() const {
  return (state_ == State::here || whose_ == Whose::this_one) && opens_alternative();
}

bool ScriptEventLokState::is_armed() const {
  return !lacks_lines_before() && WatchingEvent::is_armed();
}

bool ScriptEventLokState::has_subject() const {
  return (whose_ != Whose::chosen || lok_.get_lok()) && !lacks_lines_before();
}

Glib::ustring ScriptEventLokState::no_subject_words() const {
  if (whose_ == Whose::chosen && !lok_.get_lok()) {
    return _("No locomotive is chosen: this condition never holds.");
  }
  return state_ == State::here
             ? _("No line before this one finds a block that it could be about.")
             : _("No line before this one finds a locomotive that it could be about.");
}

// The locomotive of the line before may be any one, and nobody tells which.
WatchingEvent::Watches ScriptEventLokState::watch() {
  Watches watches;
  if (whose_ != Whose::chosen) {
    watches.emplace_back(Lok::signal_condition_changed().connect([this](Lok&) { trigger(); }));
  } else if (auto* lok = lok_.get_lok()) {
    watches.emplace_back(Lok::signal_condition_changed().connect([this, lok](Lok& changed) {
      if (&changed == lok) trigger();
    }));
  }
  return watches;
}

void ScriptEventLokState::test(Lok* lok, const EventInstance& partial) const {
  if (lok && !lok->is_deleting() && holds(state_, *lok, partial.block)) yield({partial.block, lok});
}

void ScriptEventLokState::generate_instances(const EventInstance& partial) {
  if (whose_ == Whose::this_one) return test(partial.lok, partial);
  if (whose_ == Whose::chosen) return test(lok_.get_lok(), partial);
  for_each_lok(Layout::get().get_loks(), [&](Lok& lok) { test(&lok, partial); });
}

}  // namespace zemblar

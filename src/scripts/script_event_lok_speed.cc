#include "scripts/script_event_lok_speed.h"

#include <array>
#include <cassert>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_event_lok_speed() {
  register_script_event<ScriptEventLokSpeed>("lok_speed", N_("Locomotive Speed Is…"));
}
[[maybe_unused]] const bool registered = (register_script_event_lok_speed(), true);

constexpr auto any_word = "Any";
constexpr auto this_word = "This";
constexpr auto travel_word = "travel";
constexpr auto intended_word = "intended";

struct Comparison {
  const char* word;
  const char* negated_word;
  const char* text;
};
constexpr std::array<Comparison, 5> comparisons{{
    {"eq", "ne", N_("equal to")},
    {"gt", "ngt", N_("greater than")},
    {"ge", "nge", N_("greater than or equal to")},
    {"lt", "nlt", N_("less than")},
    {"le", "nle", N_("less than or equal to")},
}};

bool read_travel(const YAML::Node& node) {
  const auto& word = scalar_of(node);
  if (word != travel_word && word != intended_word) throw YAML::InvalidScalar(node.Mark());
  return word == travel_word;
}

Glib::ustring subject_text(int type) {
  return type == 1   ? _("Any Locomotive")
         : type == 2 ? _("This Locomotive")
                     : _("(No Locomotive Selected)");
}

Glib::ustring travel_text(bool travel) {
  return travel ? C_("Speed", "Travel") : C_("Speed", "Intended");
}

Glib::ustring negate_text(bool negate) {
  return negate ? _("is not") : _("is");
}

Glib::ustring compare_text(unsigned compare) {
  return _(comparisons[compare].text);
}

}  // namespace

ScriptEventLokSpeed::ScriptEventLokSpeed() {
  lok.signal_changing().connect(signal_changing().make_slot());
  lok.signal_changed().connect([this] { signal_line_changed().emit(1); });
}

ScriptEventLokSpeed::ScriptEventLokSpeed(const YAML::Node& entry) : ScriptEventLokSpeed() {
  const auto subject = element(entry, 2);
  read_compare(element(entry, 3));
  speed = read_speed(entry, 4);
  if (entry.size() > 6) travel = read_travel(entry[6]);
  lok_type = is_word(subject, any_word) ? any : is_word(subject, this_word) ? this_one : chosen;
  if (lok_type == chosen) lok.load(subject);
}

void ScriptEventLokSpeed::read_compare(const YAML::Node& node) {
  const auto& word = scalar_of(node);
  for (compare = 0; compare < comparisons.size(); ++compare) {
    negate = word == comparisons[compare].negated_word;
    if (negate || word == comparisons[compare].word) return;
  }
  throw YAML::InvalidScalar(node.Mark());
}

void ScriptEventLokSpeed::save(YAML::Emitter& out) const {
  const auto compare = static_cast<int>(this->compare);
  assert((lok_type >= 0) && (lok_type <= 2));
  assert((compare >= 0) && (compare <= 4));
  if (lok_type == chosen) {
    out << static_cast<const Object*>(lok.get_lok());
  } else {
    out << (lok_type == any ? any_word : this_word);
  }
  const auto& comparison = comparisons[this->compare];
  out << (negate ? comparison.negated_word : comparison.word);
  write_speed(out, speed);
  if (travel) out << travel_word;
}

Glib::ustring ScriptEventLokSpeed::get_format() const {
  return _("%1 %2 Speed %3 %4 %5");
}

std::vector<ScriptLine::Argument> ScriptEventLokSpeed::arguments() {
  const auto subject = [this] {
    return lok.get_lok() ? lok.get_lok()->get_name() : subject_text(lok_type);
  };
  return {{.type = ArgType::menu, .text = subject, .choices = [this] { return subject_choices(); }},
          one_of(2, travel, {false, true}, travel_text),
          one_of(3, negate, {false, true}, negate_text),
          one_of(4, compare, {0U, 1U, 2U, 3U, 4U}, compare_text),
          speed_argument(5, speed)};
}

std::vector<ScriptChoice> ScriptEventLokSpeed::subject_choices() {
  auto all = lok_choices([this](Lok* named) {
    return choice(
        named->get_name(), [this, named] { choose_subject(named, chosen); }, named);
  });
  for (const auto type : {any, this_one}) {
    all.push_back(choice(subject_text(type), [this, type] { choose_subject(nullptr, type); }));
  }
  return all;
}

void ScriptEventLokSpeed::choose_subject(Lok* named, Subject type) {
  if (named == lok.get_lok() && type == lok_type) return;
  signal_changing().emit();
  lok.set_lok(named);
  lok_type = type;
  signal_line_changed().emit(1);
}

Glib::ustring ScriptEventLokSpeed::asleep_because() const {
  return _("Speeds of locomotives are not compared yet: this line never holds.");
}

}  // namespace zemblar

#include "scripts/script_entry.h"

#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

constexpr auto km_h_word = "km/h";
constexpr auto percent_word = "%";

}  // namespace

YAML::Node element(const YAML::Node& entry, unsigned place) {
  if (place >= entry.size()) throw YAML::TypedKeyNotFound<unsigned>(entry.Mark(), place);
  return entry[place];
}

bool is_word(const YAML::Node& element, const char* word) {
  return element.IsScalar() && element.Scalar() == word;
}

SpeedArg read_speed(const YAML::Node& entry, unsigned place) {
  SpeedArg speed;
  element(entry, place) >> speed.speed;
  const auto unit = element(entry, place + 1);
  speed.km_h = scalar_of(unit) == km_h_word;
  if (!speed.km_h && unit.Scalar() != percent_word) throw YAML::InvalidScalar(unit.Mark());
  return speed;
}

void write_speed(YAML::Emitter& out, const SpeedArg& speed) {
  out << speed.speed << (speed.km_h ? km_h_word : percent_word);
}

Glib::ustring speed_text(const SpeedArg& speed) {
  if (!speed.km_h) return Glib::ustring::compose(_("%1%%"), speed.speed);
  return Glib::ustring::compose("%1 %2", speed.speed, _("km/h"));
}

std::vector<ScriptChoice> lok_choices(const std::function<ScriptChoice(Lok*)>& make_choice) {
  std::vector<Lok*> loks;
  collect(Layout::get(), loks);
  std::vector<ScriptChoice> choices;
  for (auto* lok : loks) choices.push_back(make_choice(lok));
  if (!loks.empty()) choices.push_back({.text = {}, .choose = {}, .separator = true});
  return choices;
}

}  // namespace zemblar

#include "scripts/script_command_lok.h"

#include <cassert>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"

namespace zemblar {
namespace {

constexpr auto this_word = "This";

}  // namespace

ScriptCommandLok::ScriptCommandLok(Script& owner) : ScriptCommand(owner) {
  lok.signal_changing().connect(signal_changing().make_slot());
  lok.signal_changed().connect([this] { signal_line_changed().emit(1); });
}

ScriptCommandLok::ScriptCommandLok(Script& owner, const YAML::Node& entry)
    : ScriptCommandLok(owner) {
  const auto subject = element(entry, 1);
  this_lok = is_word(subject, this_word);
  if (!this_lok) lok.load(subject);
}

void ScriptCommandLok::save(YAML::Emitter& out) const {
  assert(!(lok.get_lok() && this_lok));
  if (this_lok) {
    out << this_word;
  } else {
    out << static_cast<const Object*>(lok.get_lok());
  }
}

std::vector<ScriptLine::Argument> ScriptCommandLok::arguments() {
  const auto text = [this]() -> Glib::ustring {
    if (lok.get_lok()) return lok.get_lok()->get_name();
    return this_lok ? _("This Locomotive") : _("(No Locomotive Selected)");
  };
  const auto choices = [this] {
    auto all = lok_choices([this](Lok* chosen) {
      return choice(
          chosen->get_name(), [this, chosen] { set_lok(chosen); }, chosen);
    });
    all.push_back(choice(_("This Locomotive"), [this] { set_this_lok(); }));
    return all;
  };
  return {{.type = ArgType::menu, .text = text, .choices = choices}};
}

void ScriptCommandLok::set_lok(Lok* chosen) {
  if (chosen == lok.get_lok() && !this_lok) return;
  signal_changing().emit();
  this_lok = false;
  lok.set_lok(chosen);
  signal_line_changed().emit(1);
}

void ScriptCommandLok::set_this_lok() {
  if (this_lok) return;
  signal_changing().emit();
  lok.set_lok(nullptr);
  this_lok = true;
  signal_line_changed().emit(1);
}

Lok* ScriptCommandLok::target(const ScriptContext& context) const {
  if (auto* named = lok.get_lok()) return named->is_deleting() ? nullptr : named;
  return this_lok ? context.lok() : nullptr;
}

}  // namespace zemblar

#include "scripts/script_command_set_function.h"

#include <cassert>
#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/string_pool.h"
#include "core/yaml_io.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_set_function() {
  register_script_command<ScriptCommandSetFunction>("set_function", N_("Set Locomotive Function"));
}
[[maybe_unused]] const bool registered = (register_script_command_set_function(), true);

constexpr auto this_word = "This";

Glib::ustring state_text(bool on) {
  return on ? _("On") : _("Off");
}

std::vector<Function*> functions_of(const Lok& lok) {
  std::vector<Function*> functions;
  collect(lok, functions);
  return functions;
}

}  // namespace

ScriptCommandSetFunction::ScriptCommandSetFunction(Script& owner) : ScriptCommand(owner) {
  function.signal_changing().connect(signal_changing().make_slot());
  function.signal_changed().connect([this] { announce_first_two(); });
}

ScriptCommandSetFunction::ScriptCommandSetFunction(Script& owner, const YAML::Node& entry)
    : ScriptCommandSetFunction(owner) {
  const auto subject = element(entry, 1);
  this_lok = is_word(subject, this_word);
  if (this_lok) {
    Glib::ustring name;
    element(entry, 2) >> name;
    function.set_name(name);
    element(entry, 3) >> state;
    return;
  }
  element(entry, 2) >> state;
  subject >> read_;
  if (PrivateForm::is_used() && entry.size() > 4) read_wanted(entry);
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        function.want(std::exchange(read_lok_, nullptr), read_name_);
        function.set_function(std::exchange(read_, nullptr));
        announce_first_two();
        return true;
      },
      *this));
}

void ScriptCommandSetFunction::save(YAML::Emitter& out) const {
  assert(!(function.get_lok() && this_lok));
  if (this_lok) {
    out << this_word << function.get_name();
  } else {
    out << static_cast<const Object*>(function.get_function());
  }
  out << state;
  if (PrivateForm::is_used() && !this_lok && !function.get_function()) save_wanted(out);
}

// Writes the locomotive, and the name of a function that it does not have.
void ScriptCommandSetFunction::save_wanted(YAML::Emitter& out) const {
  out << static_cast<const Object*>(function.get_lok()) << function.get_name();
}

void ScriptCommandSetFunction::read_wanted(const YAML::Node& entry) {
  entry[3] >> read_lok_;
  element(entry, 4) >> read_name_;
}

Glib::ustring ScriptCommandSetFunction::get_format() const {
  return C_("Set Function", "Set %1 %2 %3");
}

std::vector<ScriptLine::Argument> ScriptCommandSetFunction::arguments() {
  const auto subject = [this]() -> Glib::ustring {
    if (const auto* lok = function.get_lok()) return lok->get_name();
    return this_lok ? _("This Locomotive") : _("(No Locomotive Selected)");
  };
  return {{.type = ArgType::menu, .text = subject, .choices = [this] { return subject_choices(); }},
          {.type = ArgType::menu,
           .text = [this] { return function_text(); },
           .choices = [this] { return function_choices(); }},
          one_of(3, state, {true, false}, state_text)};
}

Glib::ustring ScriptCommandSetFunction::function_text() const {
  const auto* lok = function.get_lok();
  const bool named = function.get_function() || this_lok;
  if (named && !function.get_name().empty()) return function.get_name();
  return lok && functions_of(*lok).empty() ? _("(No Functions)") : _("(No Function Selected)");
}

std::vector<ScriptChoice> ScriptCommandSetFunction::subject_choices() {
  auto all = lok_choices([this](Lok* lok) {
    return choice(
        lok->get_name(), [this, lok] { set_lok(lok); }, lok);
  });
  all.push_back(choice(_("This Locomotive"), [this] { set_this_lok(); }));
  return all;
}

// For the locomotive of the run, the names of all functions can be chosen.
std::vector<ScriptChoice> ScriptCommandSetFunction::function_choices() {
  std::vector<ScriptChoice> all;
  if (const auto* lok = function.get_lok()) {
    for (auto* offered : functions_of(*lok)) {
      all.push_back(choice(
          offered->get_name(), [this, offered] { set_function(offered); }, offered));
    }
  } else if (this_lok) {
    for (const auto& name : function_names().get_all()) {
      all.push_back(choice(name, [this, name] { set_function_name(name); }));
    }
  }
  return all;
}

void ScriptCommandSetFunction::set_lok(Lok* lok) {
  if (lok == function.get_lok() && !this_lok) return;
  signal_changing().emit();
  this_lok = false;
  function.set_lok(lok);
  announce_first_two();
}

void ScriptCommandSetFunction::set_this_lok() {
  if (!this_lok) set_function_name(function.get_name());
}

void ScriptCommandSetFunction::set_function(Function* chosen) {
  if (chosen == function.get_function() && !this_lok) return;
  signal_changing().emit();
  this_lok = false;
  function.set_function(chosen);
  announce_first_two();
}

void ScriptCommandSetFunction::set_function_name(const Glib::ustring& name) {
  if (this_lok && name.raw() == function.get_name().raw()) return;
  signal_changing().emit();
  this_lok = true;
  function.set_name(name);
  announce_first_two();
}

void ScriptCommandSetFunction::set_state(bool on) {
  change(3, state, on);
}

Function* ScriptCommandSetFunction::target(const ScriptContext& context) const {
  auto* named = function.get_function();
  if (this_lok) {
    const auto* lok = context.lok();
    named = lok ? function.find_in(*lok) : nullptr;
  }
  return named && !named->is_deleting() ? named : nullptr;
}

void ScriptCommandSetFunction::run(ScriptContext& context) {
  if (auto* wanted = target(context)) context.set_state(*wanted, state);
}

}  // namespace zemblar

#include "scripts/script_command_run_script.h"

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_run_script() {
  register_script_command<ScriptCommandRunScript>("run_script", N_("Run Script"),
                                                  MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_command_run_script(), true);

}  // namespace

ScriptCommandRunScript::ScriptCommandRunScript(Script& owner) : ScriptCommand(owner) {
  other_.signal_changing().connect(signal_changing().make_slot());
  other_.signal_changed().connect([this] { signal_line_changed().emit(1); });
}

ScriptCommandRunScript::ScriptCommandRunScript(Script& owner, const YAML::Node& entry)
    : ScriptCommandRunScript(owner) {
  other_.read(element(entry, 1));
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        other_.take_read();
        signal_line_changed().emit(1);
        return true;
      },
      *this));
}

void ScriptCommandRunScript::save(YAML::Emitter& out) const {
  out << static_cast<const Object*>(other_.get());
}

Glib::ustring ScriptCommandRunScript::get_format() const {
  return _("Run %1");
}

std::vector<ScriptLine::Argument> ScriptCommandRunScript::arguments() {
  const auto scripts = [this] {
    std::vector<Script*> found;
    collect(Layout::get(), found);
    std::vector<ScriptChoice> all;
    for (auto* offered : found) {
      all.push_back(choice(
          offered->get_name(), [this, offered] { choose(offered); }, offered));
    }
    return all;
  };
  const auto text = [this]() -> Glib::ustring {
    return other_.get() ? other_.get()->get_name() : _("(No Script Selected)");
  };
  return {{.type = ArgType::menu, .text = text, .choices = scripts}};
}

void ScriptCommandRunScript::choose(Script* chosen) {
  if (chosen == other_.get()) return;
  signal_changing().emit();
  other_.set(chosen);
  signal_line_changed().emit(1);
}

void ScriptCommandRunScript::run(ScriptContext& context) {
  auto* other = other_.get();
  if (!other || other->is_deleting()) return;
  if (other->run_once({context.block(), context.lok()}) || context.is_cancelled()) return;
  context.give_up(_("It runs itself, without a wait in between."));
}

}  // namespace zemblar

#include "scripts/script_command_say.h"

#include "core/i18n.h"
#include "core/status.h"
#include "core/yaml_io.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_say() {
  register_script_command<ScriptCommandSay>("say", N_("Say in the Status Line"),
                                            MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_command_say(), true);

/// No variable has this type: the editor of the text offers no names.
constexpr int no_variable = -1;

}  // namespace

ScriptCommandSay::ScriptCommandSay(Script& owner)
    : ScriptCommand(owner), text_(_("A train has come")) {}

ScriptCommandSay::ScriptCommandSay(Script& owner, const YAML::Node& entry) : ScriptCommand(owner) {
  element(entry, 1) >> text_;
  text_ = text_.substr(0, longest_text);
}

void ScriptCommandSay::save(YAML::Emitter& out) const {
  out << text_;
}

Glib::ustring ScriptCommandSay::get_format() const {
  return _("Say “%1”");
}

std::vector<ScriptLine::Argument> ScriptCommandSay::arguments() {
  return {{.type = ArgType::text,
           .text = [this] { return text_.empty() ? Glib::ustring("…") : text_; },
           .variable_type = no_variable,
           .set_text =
               [this](const Glib::ustring& text) {
                 if (!text.empty()) change(1, text_, text.substr(0, longest_text));
               }}};
}

void ScriptCommandSay::run(ScriptContext& /*context*/) {
  set_status(text_);
}

}  // namespace zemblar

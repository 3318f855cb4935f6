#include "scripts/script_command_save.h"

#include "core/i18n.h"
#include "scripts/script_context.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_save() {
  register_script_command<ScriptCommandSave>("save", N_("Save"));
}
void register_script_command_restore() {
  register_script_command<ScriptCommandRestore>("restore", N_("Restore"));
}
[[maybe_unused]] const bool registered =
    (register_script_command_save(), register_script_command_restore(), true);

}  // namespace

Glib::ustring ScriptCommandSave::get_format() const {
  return _("Save");
}

void ScriptCommandSave::run(ScriptContext& context) {
  context.push();
}

Glib::ustring ScriptCommandRestore::get_format() const {
  return _("Restore");
}

void ScriptCommandRestore::run(ScriptContext& context) {
  context.pop();
}

}  // namespace zemblar

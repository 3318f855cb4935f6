#include "ui/panels/script_properties.h"

#include "core/i18n.h"
#include "core/toplevel.h"
#include "scripts/script.h"
#include "ui/scripts/script_editor.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/new_button.h"

namespace zemblar {
namespace {

/// The panel of all scripts.
class ScriptToplevelProperties : public Form {
 public:
  ScriptToplevelProperties(ScriptToplevel& scripts, const Labels& labels)
      : Form(labels), start_(_("_Start Scripts"), true) {
    add_new_button<Script>(*this, _("_New Script"), scripts);
    add_wide(start_);
    start_.set_tooltip_text(
        _("Scripts of an opened file sleep, so that no file moves a train by itself. This wakes "
          "them all: from now on they watch the railway"));
    start_.signal_clicked().connect(sigc::ptr_fun(&start_scripts));
    sleeping_changed_ = signal_sleeping_changed().connect([this] { follow(); });
    follow();
  }

 private:
  void follow() { start_.set_sensitive(sleeping_scripts() != 0); }

  Gtk::Button start_;
  ScopedConnection sleeping_changed_;
};

const PanelRegistration<Script, SProps> registration;
const PanelRegistration<ScriptToplevel, ScriptToplevelProperties> toplevel_registration;

}  // namespace

SProps::SProps(Script& script, const Labels& labels)
    : Form(labels),
      script_(&script),
      name_(script),
      edit_(_("_Edit Script"), true),
      start_(_("_Start Script"), true) {
  add_row(_("_Name:"), name_);
  add_wide(edit_);
  add_wide(start_);
  start_.set_tooltip_text(
      _("Wakes the conditions of this script: from now on they watch the "
        "railway"));
  edit_.signal_clicked().connect([this] {
    if (!script_) return;
    auto* editor = new ScriptEditor(*script_);  // deletes itself
    EditHistory::share(*editor, edit_);
    editor->show();
  });
  start_.signal_clicked().connect([this] {
    if (script_) script_->start();
  });
  sleeping_changed_ = signal_sleeping_changed().connect([this] { follow(); });
  follow();
}

void SProps::follow() {
  if (script_) start_.set_sensitive(script_->sleeps());
}

}  // namespace zemblar

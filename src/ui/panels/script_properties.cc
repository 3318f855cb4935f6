#include "ui/panels/script_properties.h"

#include <gtkmm/menu.h>

#include "core/i18n.h"
#include "core/toplevel.h"
#include "scripts/script.h"
#include "scripts/script_template.h"
#include "scripts/script_text.h"
#include "ui/scripts/script_clipboard.h"
#include "ui/scripts/script_editor.h"
#include "ui/scripts/template_dialog.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/new_button.h"
#include "ui/toolkit/popup.h"

namespace zemblar {
namespace {

/// The panel of all scripts.
class ScriptToplevelProperties : public Form {
 public:
  ScriptToplevelProperties(ScriptToplevel& scripts, const Labels& labels)
      : Form(labels),
        templates_(_("New Script from _Template…"), true),
        paste_(_("_Paste Script"), true),
        start_(_("_Start Scripts"), true) {
    add_new_button<Script>(*this, _("_New Script"), scripts);
    offer_templates();
    add_wide(paste_);
    paste_.set_tooltip_text(
        _("Makes a script of what “Copy Script” has put on the clipboard, also in another layout. "
          "It sleeps until it is started"));
    paste_.signal_clicked().connect([this] {
      clipboard_.ask([](const Glib::ustring& text) {
        if (auto* script = paste_script(text)) signal_object_made().emit(*script);
      });
    });
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

  void offer_templates() {
    for (const auto& offered : script_templates()) {
      auto* item = Gtk::manage(new Gtk::MenuItem(_(offered.name)));
      item->set_tooltip_text(_(offered.purpose));
      item->signal_activate().connect(
          [this, &offered] { TemplateDialog::run(offered, templates_); });
      menu_.append(*item);
    }
    menu_.show_all();
    templates_.set_tooltip_text(
        _("Asks for blocks, signals and trains, and writes scripts that you can read and change"));
    templates_.signal_clicked().connect([this] { popup_below(menu_, templates_); });
    add_wide(templates_);
  }

  Gtk::Menu menu_;
  Gtk::Button templates_;
  Gtk::Button paste_;
  Gtk::Button start_;
  ClipboardReader clipboard_;
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
      copy_(_("_Copy Script"), true),
      start_(_("_Start Script"), true) {
  add_row(_("_Name:"), name_);
  add_wide(edit_);
  add_wide(copy_);
  copy_.set_tooltip_text(
      _("Puts the script on the clipboard as text; “Paste Script” in the panel of Scripts makes "
        "another one of it"));
  copy_.signal_clicked().connect([this] {
    if (script_) copy_to_clipboard(*script_, nullptr);
  });
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

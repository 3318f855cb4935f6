#include <glibmm/optioncontext.h>
#include <glibmm/optionentry.h>
#include <glibmm/optiongroup.h>
#include <gtkmm/main.h>
#include <gtkmm/messagedialog.h>

#include <iostream>
#include <optional>

#include "core/i18n.h"
#include "core/instance.h"
#include "ui/windows/application.h"

namespace {

Glib::OptionEntry flag(const char* long_name, char short_name, const char* description) {
  Glib::OptionEntry entry;
  entry.set_long_name(long_name);
  entry.set_short_name(short_name);
  entry.set_description(description);
  return entry;
}

/// Asks the user whether to start although the running program does not answer.
bool starts_beside(const Glib::ustring& problem) {
  Gtk::MessageDialog dialog(_("Zemblar runs already, but it does not answer."), false,
                            Gtk::MESSAGE_WARNING, Gtk::BUTTONS_CANCEL);
  dialog.set_secondary_text(Glib::ustring::compose(
      _("Two programs must not drive the same station. End the other one before you start "
        "another. (%1)"),
      problem));
  dialog.add_button(_("_Start Another"), Gtk::RESPONSE_OK);
  dialog.set_title("Zemblar");
  dialog.set_keep_above();  // above the windows of the program that does not answer
  return dialog.run() == Gtk::RESPONSE_OK;
}

/// True if this process is to continue. False if the running program has received the options, or
/// the user has decided against a second program.
bool find_or_become(std::optional<zemblar::Instance>& instance,
                    const zemblar::StartOptions& options) {
  try {
    instance.emplace(zemblar::Instance::Kind::program);
  } catch (const Glib::Error& error) {
    return starts_beside(error.what());
  }
  return !instance->pass_on(
      {.track_view = options.track_view, .track_editor = options.track_editor});
}

}  // namespace

int main(int argc, char** argv) {
  zemblar::set_up_process();

  zemblar::StartOptions options;
  auto view = flag("track-view", 'v', _("Start with Track View window open"));
  auto editor = flag("track-editor", 'e', _("Start with Track Editor window open"));
  bool new_instance = false;
  auto another = flag("new-instance", 0, _("Start also when Zemblar runs already"));
  Glib::OptionGroup group("", "", "");
  group.add_entry(view, options.track_view);
  group.add_entry(editor, options.track_editor);
  group.add_entry(another, new_instance);
  Glib::OptionContext context("");
  context.set_main_group(group);
  context.set_description(_("A layout file is opened by zemblar-open FILE."));

  std::optional<Gtk::Main> toolkit;
  try {
    toolkit.emplace(argc, argv, context);
  } catch (const Glib::OptionError& error) {
    std::cerr << "zemblar: " << error.what().raw() << '\n';
    return 1;
  }
  std::optional<zemblar::Instance> instance;
  if (!new_instance && !find_or_become(instance, options)) return 0;
  {
    zemblar::Application application(options);
    if (instance) instance->serve([&](const auto& wish) { application.serve(wish); });
    application.run();
    instance.reset();
  }
  toolkit.reset();
  return 0;
}

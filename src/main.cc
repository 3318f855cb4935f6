#include <glibmm/optioncontext.h>
#include <glibmm/optionentry.h>
#include <glibmm/optiongroup.h>
#include <gtkmm/main.h>

#include <iostream>
#include <optional>

#include "core/i18n.h"
#include "ui/application.h"

namespace {

Glib::OptionEntry flag(const char* long_name, char short_name, const char* description) {
  Glib::OptionEntry entry;
  entry.set_long_name(long_name);
  entry.set_short_name(short_name);
  entry.set_description(description);
  return entry;
}

}  // namespace

int main(int argc, char** argv) {
  zemblar::set_up_process();

  zemblar::StartOptions options;
  auto view = flag("track-view", 'v', _("Start with Track View window open"));
  auto editor = flag("track-editor", 'e', _("Start with Track Editor window open"));
  Glib::OptionGroup group("", "", "");
  group.add_entry(view, options.track_view);
  group.add_entry(editor, options.track_editor);
  Glib::OptionContext context("");
  context.set_main_group(group);

  std::optional<Gtk::Main> toolkit;
  try {
    toolkit.emplace(argc, argv, context);
  } catch (const Glib::OptionError& error) {
    std::cerr << "zemblar: " << error.what() << '\n';
    return 1;
  }
  {
    zemblar::Application application(options);
    zemblar::Application::run();
  }
  toolkit.reset();
  return 0;
}

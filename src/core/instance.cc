#include "core/instance.h"

#include <gio/gio.h>
#include <giomm/file.h>

#include <utility>

namespace zemblar {
namespace {

constexpr const char* name_on_the_bus = "zemblar.Zemblar";

Gio::ApplicationFlags flags_of(Instance::Kind kind) {
  const auto opens = Gio::APPLICATION_HANDLES_OPEN;
  return kind == Instance::Kind::opener ? opens | Gio::APPLICATION_IS_LAUNCHER : opens;
}

}  // namespace

Instance::Instance(Kind kind) : name_(Gio::Application::create(name_on_the_bus, flags_of(kind))) {
  name_->signal_activate().connect([this] { receive({}); });
  name_->signal_open().connect([this](const Gio::Application::type_vec_files& files, const auto&) {
    for (const auto& file : files) receive({.file = file->get_path()});
  });
  add_action("track-view", &Wish::track_view);
  add_action("track-editor", &Wish::track_editor);
  try {
    name_->register_application();
  } catch (const Glib::Error&) {
    // For an opener this error means that no program runs.
    if (kind == Kind::program) throw;
    name_.reset();
    return;
  }
  // By default the library ends the process when the bus ends, while trains keep running.
  if (const auto bus = name_->get_dbus_connection()) bus->set_exit_on_close(false);
}

void Instance::add_action(const char* name, bool Wish::*window) {
  name_->add_action(name, [this, window] {
    Wish wish;
    wish.*window = true;
    receive(wish);
  });
}

// False also when the bus ends meanwhile: the wish may not have arrived.
bool Instance::pass_on(const Wish& wish) const try {
  if (!name_ || !name_->is_remote()) return false;
  if (wish.track_editor) name_->activate_action("track-editor");
  if (wish.track_view) name_->activate_action("track-view");
  if (!wish.file.empty()) {
    name_->open(Gio::File::create_for_path(wish.file));
  } else if (!wish.track_view && !wish.track_editor) {
    name_->activate();
  }
  name_->get_dbus_connection()->flush_sync();
  return true;
} catch (const Glib::Error&) {
  return false;
}

void Instance::serve(std::function<void(const Wish&)> serve) {
  serve_ = std::move(serve);
  for (const auto& wish : std::exchange(waiting_, {})) serve_(wish);
}

void Instance::receive(const Wish& wish) {
  serve_ ? serve_(wish) : waiting_.push_back(wish);
}

}  // namespace zemblar

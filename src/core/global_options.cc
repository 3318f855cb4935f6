#include "core/global_options.h"

#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/keyfile.h>
#include <glibmm/miscutils.h>

#include <algorithm>

#include "core/i18n.h"
#include "core/property.h"
#include "core/safe_write.h"
#include "core/status.h"

namespace zemblar {
namespace {

constexpr auto group = "zemblar";
constexpr auto layout_key = "layout";
constexpr auto trains_key = "trains-go-on";
constexpr auto points_key = "points-protected";
constexpr auto grid_key = "grid";

std::string folder() {
  return Glib::build_filename(Glib::get_user_config_dir(), "zemblar");
}

std::string options_file() {
  return Glib::build_filename(folder(), "options.ini");
}

}  // namespace

GlobalOptions& GlobalOptions::get() {
  static auto* options = new GlobalOptions;
  return *options;
}

GlobalOptions::GlobalOptions() : Glib::ObjectBase("GlobalOptions") {
  register_property<std::string>(this, "layout", &GlobalOptions::get_layout,
                                 &GlobalOptions::set_layout);
  register_property<bool>(this, "trains-go-on", &GlobalOptions::get_trains_go_on,
                          &GlobalOptions::set_trains_go_on);
  register_property<bool>(this, "points-protected", &GlobalOptions::get_points_protected,
                          &GlobalOptions::set_points_protected);
  register_property<unsigned>(this, "grid", &GlobalOptions::get_grid, &GlobalOptions::set_grid);
  load();
}

void GlobalOptions::set_trains_go_on(bool go_on) {
  if (go_on == trains_go_on_) return;
  trains_go_on_ = go_on;
  store();
  notify_property(*this, "trains-go-on");
}

void GlobalOptions::set_points_protected(bool is_protected) {
  if (is_protected == points_protected_) return;
  points_protected_ = is_protected;
  store();
  notify_property(*this, "points-protected");
}

void GlobalOptions::set_grid(unsigned step) {
  if (step == grid_) return;
  grid_ = std::min(step, widest_grid);
  store();
  notify_property(*this, "grid");
}

void GlobalOptions::set_layout(const std::string& path) {
  if (path == layout_) return;
  layout_ = path;
  store();
  notify_property(*this, "layout");
}

void GlobalOptions::load() {
  Glib::KeyFile file;
  const auto read = [&file](const char* key, const auto& take) {
    try {
      take(key);
    } catch (const Glib::Error&) {
      // It is missing or damaged.
    }
  };
  try {
    if (!file.load_from_file(options_file())) return;
  } catch (const Glib::Error&) {
    return;  // no such file yet, or one that is damaged as a whole
  }
  read(layout_key, [&](const char* key) {
    const auto uri = file.get_string(group, key).raw();
    if (!uri.empty()) layout_ = Glib::filename_from_uri(uri);
  });
  read(trains_key, [&](const char* key) { trains_go_on_ = file.get_boolean(group, key); });
  read(points_key, [&](const char* key) { points_protected_ = file.get_boolean(group, key); });
  read(grid_key, [&](const char* key) {
    const auto step = file.get_integer(group, key);
    grid_ = static_cast<unsigned>(std::clamp(step, 0, static_cast<int>(widest_grid)));
  });
}

void GlobalOptions::store() const try {
  Glib::KeyFile file;
  file.set_string(group, layout_key, layout_.empty() ? "" : Glib::filename_to_uri(layout_));
  if (trains_go_on_) file.set_boolean(group, trains_key, true);
  if (points_protected_) file.set_boolean(group, points_key, true);
  if (grid_ != usual_grid) file.set_integer(group, grid_key, static_cast<int>(grid_));
  g_mkdir_with_parents(folder().c_str(), 0700);
  write_safely(Gio::File::create_for_path(options_file()), file.to_data());
} catch (const Glib::Error& error) {
  set_status(
      Glib::ustring::compose(_("What is to be remembered could not be stored: %1"), error.what()));
}

}  // namespace zemblar

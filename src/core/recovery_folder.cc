#include "core/recovery_folder.h"

#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "core/file_bytes.h"
#include "core/i18n.h"

namespace zemblar {
namespace {

constexpr std::string_view current_extension = ".current";
constexpr std::string_view aside_extension = ".kept";
// Prefix of the toolkit's temporary files.
constexpr std::string_view left_behind = ".goutputstream-";
constexpr std::ptrdiff_t kept_count = 20;
// The longest path, with three bytes per character when escaped, and some lines.
constexpr std::size_t longest_head = 16384;
// The private form of a layout is somewhat longer than its file.
constexpr std::size_t largest_text = 2 * largest_layout;

std::string stem_for(const std::string& layout) {
  if (layout.empty()) return "no-file";
  return digest_of(layout).substr(0, 32);
}

/// The name of a current file: `STEM.current`, or `STEM.SLOT.current` for another slot than 0.
struct CurrentName {
  std::string stem;
  unsigned slot = 0;

  static std::optional<CurrentName> parse(std::string_view name) {
    if (!name.ends_with(current_extension)) return std::nullopt;
    name.remove_suffix(current_extension.size());
    const auto dot = name.find('.');
    CurrentName current{.stem = std::string(name.substr(0, dot))};
    if (dot == name.npos) return current;
    const auto* end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + dot + 1, end, current.slot);
    if (error != std::errc() || stop != end) return std::nullopt;
    return current;
  }
};

bool is_kept(std::string_view name) {
  return name.ends_with(current_extension) || name.ends_with(aside_extension);
}

std::optional<KeptText> parse_file(const std::string& path, std::size_t limit) {
  const auto file = read_regular_file(path, limit);
  if (!file) return std::nullopt;
  return KeptText::parse(file->bytes, file->file_size);
}

}  // namespace

std::string RecoveryFolder::usual_path() {
  return Glib::build_filename(Glib::get_user_config_dir(), "zemblar", "recovery");
}

std::string RecoveryFolder::current_file(const std::string& layout) const {
  const auto slot = slot_.number();
  const auto number = slot == 0 ? std::string() : "." + std::to_string(slot);
  return Glib::build_filename(path_, stem_for(layout) + number + std::string(current_extension));
}

std::string RecoveryFolder::free_file(const std::string& layout, gint64 time) const {
  return free_file_of(stem_for(layout), time);
}

std::string RecoveryFolder::free_file_of(const std::string& stem, gint64 time) const {
  for (;; ++time) {
    auto file = Glib::build_filename(
        path_, stem + "-" + std::to_string(time) + std::string(aside_extension));
    if (!Glib::file_test(file, Glib::FILE_TEST_EXISTS)) return file;
  }
}

std::string RecoveryFolder::set_aside(const std::string& layout) const {
  auto file = free_file(layout, g_get_real_time());
  return g_rename(current_file(layout).c_str(), file.c_str()) == 0 ? file : std::string();
}

std::vector<std::string> RecoveryFolder::set_all_aside(
    const std::optional<std::string>& layout) const {
  std::vector<std::string> files;
  for (const auto& name : names()) {
    const auto current = CurrentName::parse(name);
    if (!current || (layout && current->stem != stem_for(*layout))) continue;
    if (!slot_.is_free(current->slot)) continue;
    auto file = free_file_of(current->stem, g_get_real_time());
    if (g_rename(Glib::build_filename(path_, name).c_str(), file.c_str()) == 0) {
      files.push_back(std::move(file));
    }
  }
  return files;
}

Glib::ustring RecoveryFolder::problem() const {
  struct stat info {};
  if (::stat(path_.c_str(), &info) != 0) return {};
  const auto name = Glib::filename_display_name(path_);
  if (!S_ISDIR(info.st_mode)) return Glib::ustring::compose(_("%1 is not a folder"), name);
  if (info.st_uid == ::geteuid()) return {};
  return Glib::ustring::compose(_("%1 belongs to somebody else"), name);
}

std::vector<std::string> RecoveryFolder::names() const try {
  if (!problem().empty()) return {};
  Glib::Dir folder(path_);
  return {folder.begin(), folder.end()};
} catch (const Glib::FileError&) {
  return {};  // the folder does not exist yet
}

std::vector<RecoveryFolder::Entry> RecoveryFolder::entries() const {
  std::vector<Entry> entries;
  for (const auto& name : names()) {
    if (!name.ends_with(aside_extension)) continue;
    auto file = Glib::build_filename(path_, name);
    auto about = read_about(file);
    if (!about) continue;
    entries.push_back({std::move(file), std::move(*about)});
  }
  std::ranges::sort(entries, std::greater(), [](const Entry& entry) { return entry.about.time; });
  return entries;
}

void RecoveryFolder::prune() const {
  std::map<std::string, std::vector<Entry>> by_layout;
  for (auto& entry : entries()) by_layout[entry.about.layout].push_back(std::move(entry));
  for (auto& [layout, entries] : by_layout) {
    if (std::ssize(entries) <= kept_count) continue;
    std::stable_partition(entries.begin() + 1, entries.end(), [](const Entry& entry) {
      return entry.about.kind != KeptText::Kind::replaced;
    });
    for (auto old = entries.begin() + kept_count; old != entries.end(); ++old) {
      g_unlink(old->file.c_str());
    }
  }
}

std::string RecoveryFolder::set_damaged(const std::string& file) const {
  const auto damaged = mark_damaged(file);
  return damaged.empty() ? file : damaged;
}

std::vector<std::string> RecoveryFolder::set_damaged_aside() const {
  std::vector<std::string> damaged;
  for (const auto& name : names()) {
    const auto file = Glib::build_filename(path_, name);
    if (name.ends_with(aside_extension) && !read_about(file)) damaged.push_back(set_damaged(file));
  }
  return damaged;
}

void RecoveryFolder::clean_up() const {
  for (const auto& name : names()) {
    const auto file = Glib::build_filename(path_, name);
    if (name.starts_with(left_behind)) g_unlink(file.c_str());
    if (is_kept(name)) g_chmod(file.c_str(), 0600);
  }
  if (problem().empty()) g_chmod(path_.c_str(), 0700);
}

std::optional<KeptText> RecoveryFolder::read(const std::string& file) {
  return parse_file(file, largest_text);
}

std::optional<KeptText> RecoveryFolder::read_about(const std::string& file) {
  auto about = parse_file(file, longest_head);
  if (about) about->text.clear();
  return about;
}

}  // namespace zemblar

#include "core/recovery_folder.h"

#include <glib/gstdio.h>
#include <glibmm/checksum.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

namespace zemblar {
namespace {

constexpr std::string_view current_extension = ".current";
constexpr std::string_view aside_extension = ".kept";
constexpr std::size_t kept_count = 20;
// Three bytes for each of the longest path, and some lines.
constexpr std::size_t longest_head = 16384;

std::string file_name_for(const std::string& layout) {
  if (layout.empty()) return "no-file";
  return Glib::Checksum::compute_checksum(Glib::Checksum::CHECKSUM_SHA256, layout).substr(0, 32);
}

bool is_kept(std::string_view name) {
  return name.ends_with(current_extension) || name.ends_with(aside_extension);
}

/// At most so many bytes of it; none when it cannot be read.
std::string beginning_of(const std::string& file, std::size_t size) {
  std::string bytes(size, 0);
  std::ifstream stream(file, std::ios::binary);
  stream.read(bytes.data(), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

}  // namespace

std::string RecoveryFolder::usual_path() {
  return Glib::build_filename(Glib::get_user_config_dir(), "zemblar", "recovery");
}

std::string RecoveryFolder::current_file(const std::string& layout) const {
  return Glib::build_filename(path_, file_name_for(layout) + std::string(current_extension));
}

std::string RecoveryFolder::free_file(const std::string& layout, gint64 time) const {
  for (;; ++time) {
    auto file = Glib::build_filename(path_, file_name_for(layout) + "-" +
                                                Glib::ustring::format(time).raw() +
                                                std::string(aside_extension));
    if (!Glib::file_test(file, Glib::FILE_TEST_EXISTS)) return file;
  }
}

std::string RecoveryFolder::set_aside(const std::string& layout) const {
  auto file = free_file(layout, g_get_real_time());
  return g_rename(current_file(layout).c_str(), file.c_str()) == 0 ? file : std::string();
}

std::vector<std::string> RecoveryFolder::names() const try {
  Glib::Dir folder(path_);
  return {folder.begin(), folder.end()};
} catch (const Glib::FileError&) {
  return {};  // nothing has been kept yet
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

void RecoveryFolder::prune(const std::string& in_use) const {
  std::vector<std::pair<gint64, std::string>> by_age;
  for (const auto& name : names()) {
    const auto file = Glib::build_filename(path_, name);
    if (file == in_use || !is_kept(name)) continue;
    const auto about = read_about(file);
    by_age.emplace_back(about ? about->time : 0, file);
  }
  if (by_age.size() <= kept_count) return;
  std::ranges::sort(by_age, std::greater());
  for (auto old = by_age.begin() + kept_count; old != by_age.end(); ++old) {
    g_unlink(old->second.c_str());
  }
}

void RecoveryFolder::clean_up() const {
  for (const auto& name : names()) {
    if (!is_kept(name)) g_unlink(Glib::build_filename(path_, name).c_str());
  }
}

std::optional<KeptText> RecoveryFolder::read(const std::string& file) {
  struct stat info {};
  if (::stat(file.c_str(), &info) != 0) return std::nullopt;
  const auto size = static_cast<std::size_t>(info.st_size);
  return KeptText::parse(beginning_of(file, size), size);
}

std::optional<KeptText> RecoveryFolder::read_about(const std::string& file) {
  struct stat info {};
  if (::stat(file.c_str(), &info) != 0) return std::nullopt;
  const auto size = static_cast<std::size_t>(info.st_size);
  auto about = KeptText::parse(beginning_of(file, std::min(size, longest_head)), size);
  if (about) about->text.clear();
  return about;
}

}  // namespace zemblar

#include "core/picture_path.h"

#include <giomm/file.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <yaml-cpp/yaml.h>

#include <filesystem>

#include "core/layout.h"
#include "core/private_form.h"

namespace zemblar {
namespace {

/// The folder of the current layout's file; empty without a file.
std::string layout_folder() {
  if (!Layout::exists()) return {};
  const auto file = Layout::get().get_file();
  return file ? file->get_parent()->get_path() : std::string();
}

bool exists(const std::string& file) {
  return Glib::file_test(file, Glib::FILE_TEST_EXISTS);
}

/// The relative path from a folder to a file. Symbolic links in both are resolved first, because
/// the system resolves ".." from the target of a link.
std::string relative_path(const std::filesystem::path& file, const std::filesystem::path& folder) {
  std::error_code failure;
  const auto from = std::filesystem::weakly_canonical(folder, failure);
  if (failure) return file.lexically_normal().string();
  const auto to = std::filesystem::weakly_canonical(file.parent_path(), failure) / file.filename();
  if (failure) return file.lexically_normal().string();
  return to.lexically_relative(from).string();
}

bool is_relative(const std::string& path) {
  return !path.empty() && !Glib::path_is_absolute(path);
}

}  // namespace

PicturePath::PicturePath(const std::string& path) : path_(path) {
  if (!path.empty()) folder_ = given_for_ ? *given_for_ : layout_folder();
}

PicturePath::RelativeTo::RelativeTo(const std::string& layout) : former_(given_for_) {
  if (layout.empty()) return;
  folder_ = Glib::path_get_dirname(layout);
  given_for_ = &folder_;
}

std::string PicturePath::file() const {
  if (path_.empty() || folder_.empty()) return path_;
  const auto named = is_relative(path_) ? Glib::build_filename(folder_, path_) : path_;
  const auto beside = Glib::build_filename(folder_, Glib::path_get_basename(path_));
  return exists(named) || !exists(beside) ? named : beside;
}

std::string PicturePath::path_to_save() const {
  const auto folder = layout_folder();
  if (folder_.empty() || folder.empty() || folder == folder_) return path_;
  if (!is_relative(path_)) return file();
  return relative_path(file(), folder);
}

YAML::Emitter& operator<<(YAML::Emitter& out, const PicturePath& picture) {
  if (!PrivateForm::is_used() || PicturePath::depth_ != 0) return out << picture.path_to_save();
  if (picture.folder_.empty()) return out << picture.path_;
  return out << YAML::Flow << YAML::BeginSeq << picture.path_ << picture.folder_ << YAML::EndSeq;
}

void operator>>(const YAML::Node& node, PicturePath& picture) {
  const bool has_folder = PrivateForm::is_used() && node.IsSequence() && node.size() == 2;
  std::string path;
  (has_folder ? node[0] : node) >> path;
  picture = PicturePath(path);
  if (has_folder) node[1] >> picture.folder_;
}

void read_picture(const YAML::Node& node, const char* key, PicturePath& picture) {
  const auto value = node[key];
  if (value && !value.IsNull()) value >> picture;
}

void write_picture(YAML::Emitter& out, const char* key, const PicturePath& picture) {
  out << YAML::Key << key << YAML::Value;
  if (picture.empty()) {
    out << YAML::Null;
  } else {
    out << picture;
  }
}

}  // namespace zemblar

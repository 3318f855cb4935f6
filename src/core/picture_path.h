#pragma once

#include <string>

#include "core/yaml_io.h"

namespace zemblar {

/// The path of a picture file; empty for no picture.
///
/// A relative path starts from the folder of the layout file that was open when the path was given.
/// After a Save As to another folder it still means the same picture, and the new layout file has
/// the path from the new folder. A picture that is missing at its path is looked for by its name
/// beside the layout file, because people move a layout file together with its pictures.
class PicturePath {
 public:
  PicturePath() = default;
  explicit PicturePath(const std::string& path);

  [[nodiscard]] bool empty() const { return path_.empty(); }
  /// The path as it was given.
  [[nodiscard]] const std::string& path() const { return path_; }
  /// The path of the file to read, which need not exist.
  [[nodiscard]] std::string file() const;
  /// The path as written to a layout file in the folder of the current layout.
  [[nodiscard]] std::string path_to_save() const;

  bool operator==(const PicturePath&) const = default;

  /// While one exists, paths are written as in a layout file even in the private form: for a text
  /// that is moved together with the layout file.
  class AsInLayoutFile {
   public:
    AsInLayoutFile() { ++depth_; }
    ~AsInLayoutFile() { --depth_; }
    AsInLayoutFile(const AsInLayoutFile&) = delete;
    AsInLayoutFile& operator=(const AsInLayoutFile&) = delete;
  };

  /// While one exists, new relative paths start from the folder of the layout file `layout`, not of
  /// the open one: for reading a text that belongs to another layout. An empty `layout` changes
  /// nothing.
  class RelativeTo {
   public:
    explicit RelativeTo(const std::string& layout);
    ~RelativeTo() { given_for_ = former_; }
    RelativeTo(const RelativeTo&) = delete;
    RelativeTo& operator=(const RelativeTo&) = delete;

   private:
    std::string folder_;
    const std::string* former_;
  };

 private:
  static inline unsigned depth_ = 0;
  static inline const std::string* given_for_ = nullptr;  // a folder

  friend YAML::Emitter& operator<<(YAML::Emitter& out, const PicturePath& picture);
  friend void operator>>(const YAML::Node& node, PicturePath& picture);

  std::string path_;
  std::string folder_;  // of the layout file when the path was given; empty without a layout file
};

/// A scalar; in the private form, a sequence of path and folder if there is a folder.
YAML::Emitter& operator<<(YAML::Emitter& out, const PicturePath& picture);
void operator>>(const YAML::Node& node, PicturePath& picture);

/// Reads the value of a key. A null or missing key means no picture.
void read_picture(const YAML::Node& node, const char* key, PicturePath& picture);
void write_picture(YAML::Emitter& out, const char* key, const PicturePath& picture);

}  // namespace zemblar

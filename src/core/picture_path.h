#pragma once

#include <string>

#include "core/yaml_io.h"

namespace zemblar {

/// Where the file of a picture is, empty for no picture.
///
/// A relative path starts from the folder of the layout file that was open when the path was given.
/// It goes on meaning the same picture when the layout gets another folder by Save As: the layout
/// file then has the path from there. A picture that is not where its path says is looked for by
/// its name beside the layout file, as a railway that moves house brings its pictures along.
class PicturePath {
 public:
  PicturePath() = default;
  explicit PicturePath(const std::string& path);

  [[nodiscard]] bool empty() const { return path_.empty(); }
  /// As it was given.
  [[nodiscard]] const std::string& path() const { return path_; }
  /// The file to read, which need not exist.
  [[nodiscard]] std::string file() const;
  /// As a layout file in the present layout's folder has it.
  [[nodiscard]] std::string path_to_save() const;

  bool operator==(const PicturePath&) const = default;

  /// While it lives, pictures are written as in a layout file, in the private form as well: for a
  /// text that goes with the layout file when its folder is moved.
  class FromLayout {
   public:
    FromLayout() { ++depth_; }
    ~FromLayout() { --depth_; }
    FromLayout(const FromLayout&) = delete;
    FromLayout& operator=(const FromLayout&) = delete;
  };

  /// While it lives, relative paths that are given start from that layout file's folder: for a text
  /// of another file than the open one. Nothing changes for an empty path.
  class GivenFor {
   public:
    explicit GivenFor(const std::string& layout);
    ~GivenFor() { given_for_ = former_; }
    GivenFor(const GivenFor&) = delete;
    GivenFor& operator=(const GivenFor&) = delete;

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
  std::string folder_;  // of the layout file at that time; empty when there was none
};

/// A scalar. In the private form a sequence of the path and its folder, where it has one.
YAML::Emitter& operator<<(YAML::Emitter& out, const PicturePath& picture);
void operator>>(const YAML::Node& node, PicturePath& picture);

/// The value of a key: null, or no such key, for no picture.
void read_picture(const YAML::Node& node, const char* key, PicturePath& picture);
void write_picture(YAML::Emitter& out, const char* key, const PicturePath& picture);

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>

#include <optional>
#include <string>
#include <vector>

#include "core/kept_text.h"
#include "core/recovery_slot.h"

namespace zemblar {

/// The folder of backup texts. For each layout it has at most one current file of this process,
/// which is rewritten while the layout is edited, and the entries that have been set aside. Other
/// processes may use the folder at the same time; each has its own current files.
class RecoveryFolder {
 public:
  explicit RecoveryFolder(const std::string& path) : path_(path), slot_(path) {}

  /// `zemblar/recovery` in the user's configuration directory.
  [[nodiscard]] static std::string usual_path();

  /// A message why the folder cannot be used; empty if it can be used or does not exist yet.
  [[nodiscard]] Glib::ustring problem() const;

  /// A backup that has been set aside. `about` has everything but the text.
  struct Entry {
    std::string file;
    KeptText about;
  };

  /// The current file for that layout; an empty `layout` stands for a document without a file.
  [[nodiscard]] std::string current_file(const std::string& layout) const;
  /// An unused file name for a new entry.
  [[nodiscard]] std::string free_file(const std::string& layout, gint64 time) const;
  /// Renames the current file of that layout, so that it becomes an entry. Returns the new name;
  /// empty when there is no current file.
  std::string set_aside(const std::string& layout) const;
  /// Does this also with the current files of processes that have ended, for one layout or for all.
  /// Returns the new names.
  [[nodiscard]] std::vector<std::string> set_all_aside(
      const std::optional<std::string>& layout = {}) const;

  /// All entries, the newest first. Damaged ones are skipped.
  [[nodiscard]] std::vector<Entry> entries() const;
  /// Removes all but twenty entries of each layout, those of kind `replaced` first. The newest
  /// entry always stays.
  void prune() const;
  /// Renames a damaged file so that it is ignored from now on, and returns the new name.
  std::string set_damaged(const std::string& file) const;
  /// Does this with all damaged entries, and returns the new names.
  [[nodiscard]] std::vector<std::string> set_damaged_aside() const;
  /// Makes the files readable for their owner alone, and removes temporary files of killed
  /// programs.
  void clean_up() const;

  /// No value when the file is missing or damaged.
  [[nodiscard]] static std::optional<KeptText> read(const std::string& file);
  /// The same without the text.
  [[nodiscard]] static std::optional<KeptText> read_about(const std::string& file);

 private:
  [[nodiscard]] std::vector<std::string> names() const;
  [[nodiscard]] std::string free_file_of(const std::string& stem, gint64 time) const;

  std::string path_;
  RecoverySlot slot_;
};

}  // namespace zemblar

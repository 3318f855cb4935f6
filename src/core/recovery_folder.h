#pragma once

#include <glibmm/ustring.h>

#include <optional>
#include <string>
#include <vector>

#include "core/kept_text.h"
#include "core/recovery_slot.h"

namespace zemblar {

/// The folder with texts that belong to layouts: for each layout at most one that this program
/// writes again and again while the layout is worked on, and those that have been set aside. Other
/// programs may use the folder at the same time; each has current files of its own.
class RecoveryFolder {
 public:
  explicit RecoveryFolder(const std::string& path) : path_(path), slot_(path) {}

  /// `zemblar/recovery` in the user's configuration directory.
  [[nodiscard]] static std::string usual_path();

  /// Why the folder cannot be used, for the person; empty if it can, or does not exist yet.
  [[nodiscard]] Glib::ustring problem() const;

  /// A text that has been set aside, without the text.
  struct Entry {
    std::string file;
    KeptText about;
  };

  /// The file for the work on that layout; for a document without a file if `layout` is empty.
  [[nodiscard]] std::string current_file(const std::string& layout) const;
  /// A name for a text that is set aside.
  [[nodiscard]] std::string free_file(const std::string& layout, gint64 time) const;
  /// Gives the current file of that layout another name, where it stays. Empty when there is none.
  std::string set_aside(const std::string& layout) const;
  /// Does this also to the files of programs that have ended, of that layout or of all. Returns the
  /// new names.
  [[nodiscard]] std::vector<std::string> set_all_aside(
      const std::optional<std::string>& layout = {}) const;

  /// The newest first; damaged ones are passed over.
  [[nodiscard]] std::vector<Entry> entries() const;
  /// Of each layout, removes all but twenty entries. What a file held before goes first, and the
  /// newest entry stays in any case.
  void prune() const;
  /// Gives the file a name by which it is not looked at again.
  std::string set_damaged(const std::string& file) const;
  /// Does this to all that should be entries and cannot be read.
  [[nodiscard]] std::vector<std::string> set_damaged_aside() const;
  /// Lets the owner alone read what is here, and removes what killed programs left behind.
  void clean_up() const;

  /// None when the file is not there, or damaged.
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

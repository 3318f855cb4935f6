#pragma once

#include <sigc++/connection.h>
#include <sigc++/signal.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/background_writer.h"
#include "core/change_count.h"
#include "core/document_keeper.h"
#include "core/document_text.h"
#include "core/recovery_folder.h"
#include "core/status.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// Keeps copies of unsaved work, so that it survives a killed program and New, Open, Quit and Save
/// As.
///
/// Some seconds after a change the document is composed as text, in slices of a few milliseconds
/// from the idle main loop, and compared with the content of its layout file. If the two differ, a
/// thread writes the text to a copy: a separate file that belongs to the path of the layout file.
/// Saving the layout removes the copy.
///
/// A copy that exists when its document is opened is lost work. It is set aside as an entry, and
/// the status line says so. Documents that New and Open have dropped, and files that Save As has
/// replaced, become entries as well. Every entry can be opened; the newest twenty of each layout
/// are kept.
///
/// There is at most one instance, used on the thread of the main loop.
class RecoveryCopy : private DocumentKeeper {
 public:
  explicit RecoveryCopy(const std::string& folder = RecoveryFolder::usual_path());
  /// Destroys the instance without a last copy, as if the program were killed; see `finish`.
  ~RecoveryCopy() override;
  RecoveryCopy(const RecoveryCopy&) = delete;
  RecoveryCopy& operator=(const RecoveryCopy&) = delete;

  /// The instance, or null.
  static RecoveryCopy* get() { return current_; }

  enum class End {
    quit,   ///< the user quits the program
    forced  ///< by a signal, or the end of the session
  };

  /// Call when the document of the program's start is loaded. `wanted` is the path of the layout to
  /// open at the start; copies of it are found even if the file could not be read.
  void start(const std::string& wanted);
  /// Writes the last copy and stops. The next start reports work that was unsaved at Quit only if
  /// the layout file has not been written since.
  void finish(End end = End::quit);

  using Entry = RecoveryFolder::Entry;
  /// The entries that can be opened now, the newest first: those of the document's file, or all
  /// entries while the document has no file, since Save cannot write to a wrong file then.
  [[nodiscard]] std::vector<Entry> offered() const;
  /// Replaces the document by the entry in `file`; the document keeps its layout file. On a failure
  /// the status line says why, and nothing else changes.
  void open(const std::string& file);
  /// True if the document differed from the content of its file when they were last compared, some
  /// seconds after a change. A document without a file is compared with an empty one.
  [[nodiscard]] bool has_unsaved_work() const { return unsaved_; }
  /// `has_unsaved_work` has changed.
  sigc::signal<void>& signal_unsaved_changed() { return signal_unsaved_changed_; }
  /// The result of `offered` has changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  using Hash = std::size_t;

  void before_drop() override;
  void document_begun() override;
  bool before_overwrite(const std::string& path) override;
  bool before_losing_complete(const std::string& path) override;
  void saved() override;
  void could_not_open(const std::string& path) override;
  void opened_whole(const std::string& path) override;

  void check();
  void report_outcome();
  void report_trouble(const Glib::ustring& problem);
  void begin_pass();
  bool take_step();
  bool write_slice();
  void end_pass();
  void keep(std::string_view text, bool quit);
  void set_unsaved(bool unsaved);
  void forget_current();
  void expect_saved_text();
  [[nodiscard]] bool untouched() const;
  bool keep_complete(const std::string& layout, const std::string& text);
  bool keep_text(KeptText::Kind kind, const std::string& layout, std::string text);
  void report_damaged(const std::vector<std::string>& files);
  void adopt(const std::vector<std::string>& files);
  void adopt_overwritten(const std::string& layout);
  bool adopt_overwritten_file(const std::string& path, const std::string& layout);
  void adopt_stray(const std::string& layout);
  [[nodiscard]] bool is_kept(KeptText::Kind kind, const std::string& layout,
                             const std::string& text) const;
  void compare_found(std::string_view text);
  void report_found(const Entry& entry);
  void report_kept(const KeptText& dropped);
  void put_dropped_aside();
  void add_status(const Glib::ustring& message);
  void refresh();

  static inline RecoveryCopy* current_ = nullptr;

  RecoveryFolder folder_;
  std::vector<Entry> entries_;
  std::vector<Entry> found_;           // entries not yet compared with the document
  std::optional<std::string> opened_;  // the entry that the document was opened from
  bool opening_ = false;
  Glib::ustring stale_status_;  // text of the status line before the present action

  std::optional<Hash> saved_;   // hash of the document's text as saved
  bool saved_is_next_ = false;  // the next pass sets `saved_`
  ChangeCount::Count edits_at_save_ = 0;
  bool unsaved_ = false;         // the last text differed from the saved one
  std::optional<Hash> written_;  // hash of the text in the current copy
  std::string current_file_;     // path of the current copy; empty for none
  std::string current_layout_;   // path of the layout that the current copy belongs to

  std::unique_ptr<DocumentText> pass_;  // the text being composed; null between passes
  enum class Step { write, compare, release } step_ = Step::write;
  Clock::duration pass_cost_{};
  ChangeCount::Count structure_of_pass_ = 0;
  ChangeCount::Count changes_seen_ = 0;
  Clock::time_point last_pass_;

  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_unsaved_changed_;
  StatusNote trouble_;
  BackgroundWriter writer_;
  Timeout check_timer_;
  ScopedConnection slices_;
};

}  // namespace zemblar

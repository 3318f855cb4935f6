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

/// Keeps copies of work that is in no file, so that neither a killed program nor New, Open, Quit
/// or Save As loses it.
///
/// Some seconds after a change the document is written as text, in slices of a few milliseconds
/// from the idle main loop, and compared with what its file holds; where it differs a thread puts
/// it in a file of its own, which belongs to the path of the layout file and is never that file.
/// The copy goes when the layout has been saved.
///
/// A copy that is there when its document is opened is work that got lost. It is set aside, the
/// status line says so, and it can be opened like what New and Open have dropped and what Save As
/// has replaced. Of each layout twenty of these stay.
///
/// There is one at most. It lives on the main loop's thread.
class RecoveryCopy : private DocumentKeeper {
 public:
  explicit RecoveryCopy(const std::string& folder = RecoveryFolder::usual_path());
  /// Ends without a last copy, as if the program were killed.
  ~RecoveryCopy() override;
  RecoveryCopy(const RecoveryCopy&) = delete;
  RecoveryCopy& operator=(const RecoveryCopy&) = delete;

  /// Null when there is none.
  static RecoveryCopy* get() { return current_; }

  enum class End {
    quit,   ///< the person wants it
    forced  ///< by a signal, or the end of the session
  };

  /// The document is there with which the program starts. `wanted` is the path of the layout that
  /// was to be opened; its copy is looked for even though the file cannot be read.
  void start(const std::string& wanted);
  /// Takes the last copy. Nothing is kept afterwards. What a person has dropped knowingly, with
  /// Quit, is told at the next start only if the file has not been written since.
  void finish(End end = End::quit);

  using Entry = RecoveryFolder::Entry;
  /// What can be opened now, the newest first: what belongs to the document's file, or everything
  /// while it has none, since Save cannot put it in a wrong file then.
  [[nodiscard]] std::vector<Entry> offered() const;
  /// Replaces the document by that one; its file stays what it was. The status line tells of a
  /// failure, and nothing else happens then.
  void open(const std::string& file);
  /// Whether the document differs from what its file holds, as the last copy has found: some
  /// seconds after the change. A document without a file differs from an empty one.
  [[nodiscard]] bool has_unsaved_work() const { return unsaved_; }
  /// `has_unsaved_work` has changed.
  sigc::signal<void>& signal_unsaved_changed() { return signal_unsaved_changed_; }
  /// What is offered has changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  using Hash = std::size_t;

  void before_drop() override;
  void begun() override;
  bool before_overwrite(const std::string& path) override;
  bool before_losing_complete(const std::string& path) override;
  void saved() override;
  void could_not_open(const std::string& path) override;
  void opened_whole(const std::string& path) override;

  void look();
  void report();
  void tell_trouble(const Glib::ustring& problem);
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
  void tell_of_damaged(const std::vector<std::string>& files);
  void adopt(const std::vector<std::string>& files);
  void adopt_overwritten(const std::string& layout);
  bool adopt_overwritten_file(const std::string& path, const std::string& layout);
  void adopt_stray(const std::string& layout);
  [[nodiscard]] bool is_kept(KeptText::Kind kind, const std::string& layout,
                             const std::string& text) const;
  void compare_found(std::string_view text);
  void tell_of(const Entry& entry);
  void tell_of_dropped(const KeptText& dropped);
  void put_dropped_aside();
  void add_status(const Glib::ustring& message);
  void refresh();

  static inline RecoveryCopy* current_ = nullptr;

  RecoveryFolder folder_;
  std::vector<Entry> entries_;
  std::vector<Entry> found_;           // not yet compared with their documents
  std::optional<std::string> opened_;  // the file that the document was opened from
  bool opening_ = false;
  Glib::ustring stale_status_;  // of something earlier

  std::optional<Hash> saved_;   // of the text of what the file holds
  bool saved_is_next_ = false;  // the next pass finds that out
  ChangeCount::Count edits_at_save_ = 0;
  bool unsaved_ = false;         // the last text differed from that
  std::optional<Hash> written_;  // of the text in the current copy
  std::string current_file_;     // of that copy; empty for none
  std::string current_layout_;   // that it belongs to

  std::unique_ptr<DocumentText> pass_;  // under way
  enum class Step { write, compare, release } step_ = Step::write;
  Clock::duration pass_cost_{};
  ChangeCount::Count structure_of_pass_ = 0;
  ChangeCount::Count changes_seen_ = 0;
  Clock::time_point last_pass_;

  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_unsaved_changed_;
  StatusNote trouble_;
  BackgroundWriter writer_;
  Timeout look_;
  ScopedConnection slices_;
};

}  // namespace zemblar

#include "core/recovery_copy.h"

#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/datetime.h>
#include <glibmm/fileutils.h>
#include <glibmm/main.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "core/complete_file.h"
#include "core/file_bytes.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/picture_path.h"
#include "core/safe_write.h"
#include "core/temporary_file.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto check_period = 3s;
// A pass starts after this time even if no change was counted.
constexpr auto longest_pause = 30s;
// The pause between two passes is at least this multiple of the last pass's processor time.
constexpr auto rest_to_work = 30;
constexpr auto slice = 2ms;

constexpr auto menu_entry = N_("File, Recover Unsaved Work");

/// Modification time in microseconds since 1970; 0 when there is no such file.
gint64 time_of_file(const std::string& path) {
  struct stat info {};
  if (path.empty() || ::stat(path.c_str(), &info) != 0) return 0;
  return gint64{info.st_mtim.tv_sec} * G_USEC_PER_SEC + info.st_mtim.tv_nsec / 1000;
}

Glib::ustring trouble_message(const Glib::ustring& problem) {
  return Glib::ustring::compose(_("The recovery copy could not be written: %1"), problem);
}

Glib::ustring display_name(const std::string& layout) {
  return layout.empty() ? _("a layout without a file") : Glib::filename_display_basename(layout);
}

/// The menu items by which the user reaches the entries of that layout.
Glib::ustring way_to_entries(const std::string& layout) {
  const auto now = Layout::get().get_path();
  const Glib::ustring entry = _(menu_entry);
  if (now.empty() || now == layout) return entry;
  return Glib::ustring::compose(_("File, New and then %1"), entry);
}

}  // namespace

RecoveryCopy::RecoveryCopy(const std::string& folder) : folder_(folder) {
  current_ = this;
  DocumentKeeper::set(this);
}

RecoveryCopy::~RecoveryCopy() {
  DocumentKeeper::set(nullptr);
  current_ = nullptr;
}

void RecoveryCopy::start(const std::string& wanted) {
  TemporaryFile::remove_left_behind();
  if (const auto problem = folder_.problem(); !problem.empty()) {
    trouble_.show_when_free(trouble_message(problem));
  }
  folder_.clean_up();
  report_damaged(folder_.set_damaged_aside());
  adopt(folder_.set_all_aside());
  if (Layout::get().get_path().empty() && !wanted.empty()) could_not_open(wanted);
  document_begun();
  if (Layout::get().is_whole_file()) opened_whole(Layout::get().get_path());
  check_timer_ = Timeout::every(check_period, [this] {
    check();
    return true;
  });
}

void RecoveryCopy::finish(End end) {
  DocumentKeeper::set(nullptr);
  report_outcome();
  check_timer_.cancel();
  slices_.disconnect();
  pass_.reset();
  if (untouched()) {
    forget_current();
  } else if (!Layout::get().is_emptying()) {  // `before_drop` has kept it already
    keep(DocumentText::whole(), end == End::quit);
  }
  writer_.finish();
}

// --- Passes ---

void RecoveryCopy::check() {
  report_outcome();
  if (pass_) return;
  const auto pause = Clock::now() - last_pass_;
  const bool changed = ChangeCount::get(Change::state) != changes_seen_;
  if ((changed && pause > pass_cost_ * rest_to_work) || pause > longest_pause) begin_pass();
}

void RecoveryCopy::report_outcome() {
  const auto outcome = writer_.take_outcome();
  if (!outcome) return;
  if (outcome->empty()) return trouble_.clear();
  written_.reset();
  report_trouble(*outcome);
}

void RecoveryCopy::report_trouble(const Glib::ustring& problem) {
  trouble_.show(trouble_message(problem));
}

void RecoveryCopy::begin_pass() {
  pass_.reset();
  pass_cost_ = {};
  step_ = Step::write;
  slices_ = Glib::signal_idle().connect(sigc::mem_fun(*this, &RecoveryCopy::take_step));
}

// Comparing and releasing have iterations of the main loop of their own, because with many objects
// they take a while as well.
bool RecoveryCopy::take_step() {
  if (Layout::get().is_emptying()) return true;
  switch (step_) {
    case Step::write:
      if (!write_slice()) step_ = Step::compare;
      return true;
    case Step::compare:
      end_pass();
      step_ = Step::release;
      return true;
    case Step::release:
      break;
  }
  pass_.reset();
  return false;
}

bool RecoveryCopy::write_slice() {
  const auto start = std::chrono::steady_clock::now();
  const auto structure = ChangeCount::get(Change::structure);
  if (!pass_ || structure != structure_of_pass_) {
    structure_of_pass_ = structure;
    changes_seen_ = ChangeCount::get(Change::state);
    pass_ = std::make_unique<DocumentText>();
  }
  bool more = true;
  while (more && std::chrono::steady_clock::now() - start < slice) more = pass_->write_part();
  pass_cost_ += std::chrono::steady_clock::now() - start;
  return more;
}

void RecoveryCopy::end_pass() {
  const auto text = pass_->text();
  last_pass_ = Clock::now();
  if (saved_is_next_ && untouched()) saved_ = std::hash<std::string_view>()(text);
  saved_is_next_ = false;
  compare_found(text);
  keep(text, false);
}

void RecoveryCopy::keep(std::string_view text, bool quit) {
  const auto hash = std::hash<std::string_view>()(text);
  set_unsaved(saved_ != hash);
  if (saved_ == hash) return forget_current();
  const auto layout = Layout::get().get_path();
  const auto file = folder_.current_file(layout);
  if (written_ == hash && file == current_file_ && !quit) return;
  if (const auto problem = folder_.problem(); !problem.empty()) return report_trouble(problem);
  written_ = hash;
  current_file_ = file;
  current_layout_ = layout;
  const KeptText about{.layout = layout, .time = g_get_real_time(), .quit = quit, .text = {}};
  writer_.write(file, about.bytes_with(text));
}

void RecoveryCopy::set_unsaved(bool unsaved) {
  if (std::exchange(unsaved_, unsaved) != unsaved) signal_unsaved_changed_.emit();
}

void RecoveryCopy::forget_current() {
  if (!current_file_.empty()) writer_.remove(current_file_);
  current_file_.clear();
  written_.reset();
}

/// Call when the layout file holds the present document; the next pass finds the hash of that text.
void RecoveryCopy::expect_saved_text() {
  set_unsaved(false);
  saved_.reset();
  saved_is_next_ = true;
  edits_at_save_ = ChangeCount::get(Change::edit);
  begin_pass();
}

/// True if the document has not changed since `expect_saved_text`.
bool RecoveryCopy::untouched() const {
  return saved_is_next_ && ChangeCount::get(Change::edit) == edits_at_save_;
}

// --- What happens to the document ---

void RecoveryCopy::before_drop() {
  stale_status_ = get_status();
  slices_.disconnect();
  pass_.reset();
  if (untouched()) {
    forget_current();
  } else {
    keep(DocumentText::whole(), false);
  }
}

void RecoveryCopy::document_begun() {
  put_dropped_aside();
  opened_.reset();
  if (opening_) {  // the opened entry is in no layout file yet
    saved_.reset();
    saved_is_next_ = false;
    begin_pass();
  } else {
    adopt_overwritten(Layout::get().get_path());
    adopt(folder_.set_all_aside(Layout::get().get_path()));
    expect_saved_text();
  }
  refresh();
}

void RecoveryCopy::put_dropped_aside() {
  writer_.finish();
  if (current_file_.empty()) return;
  current_file_.clear();
  written_.reset();
  const auto file = folder_.set_aside(current_layout_);
  if (const auto dropped = RecoveryFolder::read(file)) report_kept(*dropped);
}

// If a complete file was written together with the cut file, it holds everything in the cut file.
bool RecoveryCopy::before_overwrite(const std::string& path) {
  const auto file = read_regular_file(path, largest_layout + 1);
  const bool kept = before_losing_complete(path);
  CompleteFile complete(path);
  const bool has_complete = complete.read();
  if (!file || file->bytes.empty()) return kept;
  if (has_complete && complete.was_written_with(digest_of(file->bytes))) return kept;
  return file->bytes.size() <= largest_layout &&
         keep_text(KeptText::Kind::replaced, path, file->bytes) && kept;
}

bool RecoveryCopy::before_losing_complete(const std::string& path) {
  CompleteFile complete(path);
  return !complete.read() || keep_complete(path, complete.text());
}

/// Keeps a complete file's text as an entry, unless an entry has that text already.
bool RecoveryCopy::keep_complete(const std::string& layout, const std::string& text) {
  constexpr auto kind = KeptText::Kind::complete;
  return is_kept(kind, layout, text) || keep_text(kind, layout, text);
}

/// Writes an entry and waits until it is on disk. False if that fails.
bool RecoveryCopy::keep_text(KeptText::Kind kind, const std::string& layout, std::string text) {
  if (const auto problem = folder_.problem(); !problem.empty()) {
    report_trouble(problem);
    return false;
  }
  const KeptText kept{.kind = kind,
                      .layout = layout,
                      .time = g_get_real_time(),
                      .quit = true,
                      .text = std::move(text)};
  const auto file = folder_.free_file(layout, kept.time);
  writer_.write(file, kept.bytes());
  writer_.finish();
  report_outcome();
  return Glib::file_test(file, Glib::FILE_TEST_EXISTS);
}

void RecoveryCopy::saved() {
  forget_current();
  if (opened_) writer_.remove(*opened_);
  opened_.reset();
  expect_saved_text();
  writer_.finish();
  folder_.set_aside(Layout::get().get_path());  // a copy of another document of that path
  refresh();
}

void RecoveryCopy::could_not_open(const std::string& path) {
  adopt_overwritten(path);
  adopt_stray(path);
  refresh();
}

// --- What has been found, and what is offered ---

// The next Save removes a complete file that belongs to another version, so its text is kept now.
void RecoveryCopy::opened_whole(const std::string& path) {
  adopt_stray(path);
  refresh();
}

/// Remembers files with work of an earlier run, or from earlier in this run, for `compare_found`.
void RecoveryCopy::adopt(const std::vector<std::string>& files) {
  for (const auto& file : files) {
    if (auto about = RecoveryFolder::read(file)) {
      found_.push_back({file, std::move(*about)});
    } else {
      report_damaged({folder_.set_damaged(file)});
    }
  }
}

/// Finds out whether a program was killed while it wrote in place into the layout file or into the
/// complete file beside it.
void RecoveryCopy::adopt_overwritten(const std::string& layout) {
  if (layout.empty()) return;
  for (const auto& path : {layout, CompleteFile(layout).path()}) {
    if (!adopt_overwritten_file(path, layout)) continue;
    add_status(Glib::ustring::compose(
        _("%1 may not have been written to its end. As it was before: choose %2."),
        display_name(path), way_to_entries(layout)));
  }
}

/// True if the file differs from the safety copy of its old content; the old content is then kept
/// as an entry.
bool RecoveryCopy::adopt_overwritten_file(const std::string& path, const std::string& layout) {
  const auto copy = copy_of_overwritten(path);
  const auto old = read_regular_file(copy, largest_layout);
  if (!old) return false;
  const auto file = read_regular_file(path, largest_layout + 1);
  const bool is_damaged = !file || file->bytes != old->bytes;
  CompleteFile complete(layout);
  const bool is_complete = path != layout && complete.take(old->bytes);
  const bool is_kept =
      !is_damaged || (is_complete ? keep_complete(layout, complete.text())
                                  : keep_text(KeptText::Kind::replaced, layout, old->bytes));
  if (is_kept) remove_copy_of_overwritten(path);
  return is_damaged && is_kept;
}

/// Keeps the complete file beside the layout, which belongs to another version of the layout, as an
/// entry. Each start finds the complete file again.
void RecoveryCopy::adopt_stray(const std::string& layout) {
  CompleteFile complete(layout);
  if (!complete.read() || !keep_complete(layout, complete.text())) return;
  add_status(
      Glib::ustring::compose(_("%1 was made for another version of it. To open that choose %2."),
                             display_name(complete.path()), way_to_entries(layout)));
}

bool RecoveryCopy::is_kept(KeptText::Kind kind, const std::string& layout,
                           const std::string& text) const {
  for (const auto& entry : folder_.entries()) {
    if (entry.about.layout != layout || entry.about.kind != kind) continue;
    const auto kept = RecoveryFolder::read(entry.file);
    if (kept && kept->text == text) return true;
  }
  return false;
}

void RecoveryCopy::report_damaged(const std::vector<std::string>& files) {
  for (const auto& file : files) {
    add_status(Glib::ustring::compose(_("A recovery copy was found, but it is damaged: %1"),
                                      Glib::filename_display_name(file)));
  }
}

/// Reports found work, except for a text that equals the document: that was not lost.
void RecoveryCopy::compare_found(std::string_view text) {
  if (found_.empty()) return;
  for (const auto& entry : found_) {
    if (entry.about.text == text && entry.about.layout == Layout::get().get_path()) {
      g_unlink(entry.file.c_str());
    } else if (!entry.about.quit || entry.about.time > time_of_file(entry.about.layout)) {
      report_found(entry);
    }
  }
  found_.clear();
  refresh();
}

void RecoveryCopy::report_found(const Entry& entry) {
  add_status(Glib::ustring::compose(
      _("Unsaved work on %1 was found, of %2. To open it choose %3."),
      display_name(entry.about.layout),
      Glib::DateTime::create_now_local(entry.about.time / G_USEC_PER_SEC).format("%x %H:%M"),
      way_to_entries(entry.about.layout)));
}

void RecoveryCopy::report_kept(const KeptText& dropped) {
  add_status(Glib::ustring::compose(_("The unsaved work on %1 is kept: choose %2."),
                                    display_name(dropped.layout), way_to_entries(dropped.layout)));
}

/// Appends the message to a text that the same action has put in the status line.
void RecoveryCopy::add_status(const Glib::ustring& message) {
  const auto before = get_status();
  const bool stale = before.empty() || before.raw() == stale_status_.raw();
  set_status(stale ? message : with_sentence(before, message));
}

void RecoveryCopy::refresh() {
  folder_.prune();
  entries_ = folder_.entries();
  signal_changed_.emit();
}

std::vector<RecoveryCopy::Entry> RecoveryCopy::offered() const {
  const auto path = Layout::get().get_path();
  if (path.empty()) return entries_;
  std::vector<Entry> offered;
  for (const auto& entry : entries_) {
    if (entry.about.layout == path) offered.push_back(entry);
  }
  return offered;
}

void RecoveryCopy::open(const std::string& file) {
  const auto kept = RecoveryFolder::read(file);
  if (!kept) {
    set_status(Glib::ustring::compose(_("Couldn't open %1: it is damaged."),
                                      Glib::filename_display_name(file)));
    return refresh();
  }
  const auto name = display_name(kept->layout);
  const PicturePath::RelativeTo pictures(kept->layout);
  opening_ = true;
  const bool opened = Layout::open_copy(kept->text, kept->in_private_form(),
                                        Glib::ustring::compose(_("what was kept of %1"), name));
  opening_ = false;
  if (!opened) return;
  opened_ = file;
  add_status(Glib::ustring::compose(
      _("Opened what was kept of %1. It is in no file until you save it."), name));
}

}  // namespace zemblar

#include <giomm/error.h>
#include <glibmm/convert.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "core/complete_file.h"
#include "core/document_keeper.h"
#include "core/document_text.h"
#include "core/file_bytes.h"
#include "core/global_options.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/picture_path.h"
#include "core/safe_write.h"
#include "core/status.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto header = "%YAML 1.2\n";
constexpr std::string_view extension = ".zblt";
// How long "Saved" hides a lasting trouble in the status line.
constexpr auto shown_for = 10s;

/// Empty if the file is missing or empty.
std::string digest_of_file(const std::string& path) {
  const auto file = read_regular_file(path, largest_layout + 1);
  return file && !file->bytes.empty() ? digest_of(file->bytes) : std::string();
}

/// The document as text with the paths of pictures relative to the layout's folder, since the
/// folder may be moved.
std::string portable_text() {
  const PicturePath::AsInLayoutFile from_layout;
  return DocumentText::whole();
}

}  // namespace

unsigned Layout::get_id(const Object* object) {
  return writing().number_of(object);
}

std::string Layout::serialize() {
  first_unsaved_ = nullptr;
  written_.clear();
  YAML::Emitter out;
  out << YAML::BeginMap;
  out << YAML::Key << "title" << YAML::Value << get_name();
  out << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
  for (int section = 0; section < section_count; ++section) {
    for (auto* object : get_toplevel(static_cast<Section>(section))) {
      out << *object;
      if (!out.good() && !first_unsaved_) first_unsaved_ = object;
    }
  }
  out << YAML::EndSeq;
  return header + std::string(out.c_str(), out.size()) + "\n";
}

void Layout::save() {
  if (!file_) return save_as();
  clear_status();
  const auto lasting_trouble = get_status();
  if (get_path().empty()) {
    throw Gio::Error(Gio::Error::NOT_SUPPORTED,
                     Glib::ustring::compose(_("Couldn't save %1: it is not on this machine."),
                                            file_->get_parse_name()));
  }
  if (dialogs().finish_edits) dialogs().finish_edits();
  // The text is complete before the file is touched.
  const auto text = serialize();
  const auto former = digest_of_file(get_path());
  const bool was_changed = keep_foreign(former);
  write_files(text, former);
  report_save(was_changed, lasting_trouble);
  if (auto* keeper = DocumentKeeper::get()) keeper->saved();
}

/// Keeps a copy of the file if another program has changed it since it was opened or saved. True if
/// the file had changed. `former` is the digest of the file's present bytes.
bool Layout::keep_foreign(const std::string& former) {
  auto* keeper = DocumentKeeper::get();
  const auto path = get_path();
  const auto complete = CompleteFile(path).digest();
  const bool has_stray = keeper && !complete.empty() && complete != known_complete_;
  const bool was_changed = keeper && ((!former.empty() && former != known_digest_) ||
                                      (has_stray && !known_complete_.empty()));
  if (!was_changed && !has_stray) return false;
  if (was_changed ? keeper->before_overwrite(path) : keeper->before_losing_complete(path)) {
    return was_changed;
  }
  throw Gio::Error(Gio::Error::FAILED,
                   Glib::ustring::compose(_("Couldn't save %1: somebody else has changed it, and "
                                            "that version cannot be kept. Choose Save As."),
                                          file_->get_parse_name()));
}

// Writes the complete file first: it belongs both to the present file and to the one written next.
void Layout::write_files(const std::string& text, const std::string& former) {
  CompleteFile complete(get_path());
  const bool has_stray = complete.digest() != known_complete_;
  const auto digest = digest_of(text);
  if (first_unsaved_) {
    std::vector<std::string> digests{digest};
    if (!former.empty()) digests.push_back(former);
    require_writable(file_);
    const auto whole = portable_text();
    complete.write(std::move(digests), whole);
    known_complete_ = digest_of(whole);
  }
  write_safely(file_, text);
  known_digest_ = digest;
  if (first_unsaved_) return;
  known_complete_.clear();
  // The keeper, if there is one, already has a copy of a complete file that was not opened here.
  if (!has_stray || DocumentKeeper::get()) complete.remove();
}

/// `lasting_trouble` is the trouble that the status line showed before the save, or empty; it is
/// shown again after a while. Any other text in the line now is a warning of this save.
void Layout::report_save(bool was_changed, const Glib::ustring& lasting_trouble) {
  const auto warnings = get_status();
  auto message = Glib::ustring::compose(_("Saved %1"), Glib::filename_display_basename(get_path()));
  const auto add = [&message](const Glib::ustring& sentence) {
    message = with_sentence(message, sentence);
  };
  if (first_unsaved_) {
    add(Glib::ustring::compose(
        _("A layout file cannot hold “%1”: the whole layout is in %2, keep both together."),
        first_unsaved_->get_name(),
        Glib::filename_display_basename(CompleteFile(get_path()).path())));
  }
  if (was_changed) {
    add(_("Somebody else had changed it: to open that version choose File, Recover Unsaved Work."));
  }
  if (warnings.raw() != lasting_trouble.raw()) add(warnings);
  set_status(message);
  if (!lasting_trouble.empty()) uncover_trouble(message);
}

void Layout::uncover_trouble(const Glib::ustring& message) {
  trouble_returns_ = Timeout::once(shown_for, [message] {
    if (get_status().raw() == message.raw()) clear_status();
  });
}

void Layout::save_as() {
  if (dialogs().save_as) dialogs().save_as(*this);
}

void Layout::save_to(std::string uri, bool complete_extension) {
  if (complete_extension) {
    auto end = uri.substr(uri.size() - std::min(uri.size(), extension.size()));
    for (auto& c : end) c = g_ascii_tolower(c);
    if (end != extension) uri += extension;
  }
  file_ = Gio::File::create_for_uri(uri);
  auto* keeper = DocumentKeeper::get();
  const bool is_kept = !keeper || keeper->before_overwrite(get_path());
  known_digest_ = digest_of_file(get_path());
  known_complete_ = CompleteFile(get_path()).digest();
  save();
  if (!is_kept) {
    set_status(with_sentence(get_status(), _("What was there before could not be kept.")));
  }
  GlobalOptions::get().set_layout(get_path());
}

}  // namespace zemblar

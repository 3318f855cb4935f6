#include "core/complete_file.h"

#include <giomm/error.h>
#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "core/file_bytes.h"
#include "core/head_lines.h"
#include "core/i18n.h"
#include "core/safe_write.h"
#include "core/status.h"

namespace zemblar {
namespace {

constexpr std::string_view first_line = "Zemblar complete layout 1\n";

std::optional<mode_t> mode_of(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  return (info.st_mode & 0777) | S_IRUSR | S_IWUSR;
}

std::vector<std::string> words_of(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

}  // namespace

CompleteFile::CompleteFile(const std::string& layout)
    : layout_(target_of(layout)), path_(layout_ + ".complete") {}

bool CompleteFile::read() {
  const auto file = read_regular_file(path_, largest_layout);
  return file && take(file->bytes);
}

bool CompleteFile::take(std::string_view bytes) try {
  const auto head = HeadLines::take(bytes, first_line);
  if (!head || head->number<std::size_t>("size") != bytes.size()) return false;
  digests_ = words_of(head->at("belongs-to"));
  text_ = bytes;
  return true;
} catch (const std::out_of_range&) {
  return false;
}

bool CompleteFile::belongs_to(const std::string& digest) const {
  return std::ranges::find(digests_, digest) != digests_.end();
}

bool CompleteFile::was_written_with(const std::string& digest) const {
  return !digests_.empty() && digests_.front() == digest;
}

void CompleteFile::set_aside() const {
  const auto name = Glib::filename_display_name(path_);
  const auto aside = mark_damaged(path_);
  if (aside.empty()) {
    throw Gio::Error(Gio::Error::FAILED,
                     Glib::ustring::compose(_("Couldn't save %1: what is there is damaged, and its "
                                              "folder takes no other name for it. Choose Save As."),
                                            name));
  }
  set_status(Glib::ustring::compose(_("%1 was damaged, and is kept as %2."), name,
                                    Glib::filename_display_basename(aside)));
}

void CompleteFile::write(std::vector<std::string> digests, std::string_view text) {
  if (exists() && !read()) set_aside();
  digests_ = std::move(digests);
  text_ = text;
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << first_line << "belongs-to:";
  for (const auto& digest : digests_) out << ' ' << digest;
  out << "\nsize: " << text_.size() << "\n\n" << text_;
  write_safely(Gio::File::create_for_path(path_), out.str(), mode_of(layout_));
}

void CompleteFile::remove() {
  if (read()) g_unlink(path_.c_str());
}

bool CompleteFile::exists() const {
  return Glib::file_test(path_, Glib::FILE_TEST_IS_REGULAR);
}

std::string CompleteFile::digest() {
  return read() ? digest_of(text_) : std::string();
}

}  // namespace zemblar

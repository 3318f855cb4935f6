#include "core/safe_write.h"

#include <giomm/cancellable.h>
#include <giomm/error.h>
#include <giomm/fileinfo.h>
#include <glib/gstdio.h>
#include <glibmm/miscutils.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "core/i18n.h"

namespace zemblar {
namespace {

using FilePtr = Glib::RefPtr<Gio::File>;

/// Follows symbolic links, so that the file they lead to is replaced and not the link.
FilePtr target_of(const FilePtr& file) {
  std::unique_ptr<char, decltype(&std::free)> resolved(
      ::realpath(file->get_path().c_str(), nullptr), &std::free);
  return resolved ? Gio::File::create_for_path(resolved.get()) : file;
}

/// Whether a temporary beside the file can be made and given its owner, group and permissions: what
/// the toolkit needs for replacing it.
bool takes_temporaries(const std::string& folder, const struct stat& info) {
  auto name = Glib::build_filename(folder, ".zemblar-XXXXXX");
  const int fd = g_mkstemp(name.data());
  if (fd < 0) return false;
  const bool alike = ::fchown(fd, info.st_uid, info.st_gid) == 0 && ::fchmod(fd, info.st_mode) == 0;
  ::close(fd);
  g_unlink(name.c_str());
  return alike;
}

/// Whether the toolkit would have to truncate the file and write into it.
bool written_in_place(const FilePtr& file) {
  const auto path = file->get_path();
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return false;
  return info.st_nlink > 1 || !takes_temporaries(Glib::path_get_dirname(path), info);
}

/// "railway.zblt", then "railway-2.zblt" and so on.
std::string numbered(const std::string& name, unsigned number) {
  if (number == 1) return name;
  const auto dot = std::min(name.rfind('.'), name.size());
  return name.substr(0, dot) + '-' + Glib::ustring::format(number).raw() + name.substr(dot);
}

/// Puts a copy of the file where it can stay; throws when that fails. An older copy is never
/// touched: it may be the last good state of a file that a failed save has cut off since.
FilePtr copy_aside(const FilePtr& file) {
  const auto folder = Glib::build_filename(Glib::get_user_data_dir(), "zemblar", "saved-copies");
  g_mkdir_with_parents(folder.c_str(), 0700);
  const auto name = Glib::path_get_basename(file->get_path());
  for (unsigned number = 1;; ++number) {
    const auto copy =
        Gio::File::create_for_path(Glib::build_filename(folder, numbered(name, number)));
    try {
      file->copy(copy, Gio::FILE_COPY_TARGET_DEFAULT_PERMS);
      return copy;
    } catch (const Gio::Error& error) {
      if (error.code() != Gio::Error::EXISTS) throw;
    }
  }
}

/// A stream that is merely dropped would put what has been written so far in the place of the good
/// file; closing it under a cancelled cancellable removes the temporary instead.
void abandon(const Glib::RefPtr<Gio::FileOutputStream>& stream) try {
  auto cancelled = Gio::Cancellable::create();
  cancelled->cancel();
  stream->close(cancelled);
} catch (const Glib::Error&) {
  // It reports that it was cancelled.
}

void write_whole(const FilePtr& file, const std::string& bytes) {
  auto stream = file->replace(std::string(), false, Gio::FILE_CREATE_NONE);
  if (!stream) return;
  try {
    gsize written = 0;
    stream->write_all(bytes, written);
    stream->flush();
  } catch (...) {
    abandon(stream);
    throw;
  }
  stream->close();
}

[[noreturn]] void fail(const FilePtr& file, const Gio::Error& error, const Glib::ustring& where) {
  throw Gio::Error(error.code(),
                   Glib::ustring::compose(_("Couldn't save %1: %2. %3"), file->get_parse_name(),
                                          error.what(), where));
}

}  // namespace

void write_safely(const FilePtr& wanted, const std::string& bytes) {
  const auto file = target_of(wanted);
  const auto* unchanged =
      file->query_exists() ? _("The file is as it was before.") : _("Nothing has been written.");
  FilePtr copy;
  try {
    if (written_in_place(file)) copy = copy_aside(file);
  } catch (const Gio::Error& error) {
    fail(wanted, error, unchanged);
  }
  try {
    write_whole(file, bytes);
  } catch (const Gio::Error& error) {
    fail(wanted, error,
         copy ? Glib::ustring::compose(_("The file as it was before is kept as %1."),
                                       copy->get_parse_name())
              : unchanged);
  }
  if (copy) copy->remove();
}

}  // namespace zemblar

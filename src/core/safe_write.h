#pragma once

#include <giomm/file.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace zemblar {

/// Replaces the content of a file so that neither a failure nor the end of the program loses
/// anything.
///
/// If the folder allows it, the bytes go to a temporary file that replaces the old one when
/// complete. If the file must be written in place (it has several hard links, or no temporary file
/// with the same owner can be made beside it), a copy of the old bytes is first put in the user's
/// data directory, and removed after success. A symbolic link stays one; its target is replaced.
///
/// Without `mode`, a new file gets the usual permissions and an existing one keeps its own.
///
/// Throws Gio::Error. Its text says what went wrong and whether the old bytes are in their place or
/// where their copy is.
void write_safely(const Glib::RefPtr<Gio::File>& file, const std::string& bytes,
                  std::optional<mode_t> mode = {});

/// Throws as `write_safely` does for a file that it would refuse to replace. Call it before writing
/// other files that belong to this one.
void require_writable(const Glib::RefPtr<Gio::File>& file);

/// The path after following symbolic links.
[[nodiscard]] std::string target_of(const std::string& path);

/// The path of the copy of the old bytes that remains when writing in place has failed or was
/// interrupted; empty if there is none.
[[nodiscard]] std::string copy_of_overwritten(const std::string& path);
void remove_copy_of_overwritten(const std::string& path);

}  // namespace zemblar

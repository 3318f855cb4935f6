#pragma once

#include <giomm/file.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace zemblar {

/// Replaces the content of a file so that neither a failure nor the end of the program loses
/// anything.
///
/// Where the folder allows it the bytes go to a temporary file that takes the place of the old one
/// when it is complete. Where the file must be written in place (it has several hard links, or no
/// temporary with its owner can be made beside it) a copy of the old bytes is kept first, in the
/// user's data directory, and removed after success. A symbolic link stays one; its target is
/// replaced.
///
/// A new file gets the usual permissions and an old one keeps its own, unless there is a `mode`.
///
/// Throws Gio::Error. Its text says what went wrong and whether the old bytes are in their place or
/// where their copy is.
void write_safely(const Glib::RefPtr<Gio::File>& file, const std::string& bytes,
                  std::optional<mode_t> mode = {});

/// Throws as `write_safely` does for a file that it would refuse to replace, before anything that
/// belongs to the file is written.
void require_writable(const Glib::RefPtr<Gio::File>& file);

/// Follows symbolic links.
[[nodiscard]] std::string target_of(const std::string& path);

/// The copy of the old bytes that is there when writing in place has come to no good end; empty if
/// there is none.
[[nodiscard]] std::string copy_of_overwritten(const std::string& path);
void remove_copy_of_overwritten(const std::string& path);

}  // namespace zemblar

#pragma once

#include <giomm/file.h>

#include <string>

namespace zemblar {

/// Replaces the content of a file so that a failure loses nothing.
///
/// Where the folder allows it the bytes go to a temporary file that takes the place of the old one
/// when it is complete. Where the file must be written in place (it has several hard links, or no
/// temporary can be made beside it) a copy of the old bytes is kept first, in the user's data
/// directory, and removed after success. A symbolic link stays one; its target is replaced.
///
/// Throws Gio::Error. Its text says what went wrong and whether the old bytes are in their place or
/// where their copy is.
void write_safely(const Glib::RefPtr<Gio::File>& file, const std::string& bytes);

}  // namespace zemblar

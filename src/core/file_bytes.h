#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>

namespace zemblar {

/// Maximum size in bytes that is read into memory: a sparse file may claim any size.
inline constexpr std::size_t largest_layout = 256 << 20;

/// The beginning of a file, at most `limit` bytes.
struct FileBytes {
  std::string bytes;
  std::size_t file_size = 0;
};

/// No value if the path cannot be read or is no regular file: reading a pipe would block.
[[nodiscard]] std::optional<FileBytes> read_regular_file(
    const std::string& path, std::size_t limit = std::numeric_limits<std::size_t>::max());

/// Renames a damaged file to an unused name that ends in `.damaged`, and returns the new name.
/// Empty when the renaming fails.
[[nodiscard]] std::string mark_damaged(const std::string& path);

/// SHA-256, in hexadecimal digits.
[[nodiscard]] std::string digest_of(const std::string& bytes);

}  // namespace zemblar

#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>

namespace zemblar {

/// More is not read into memory: a sparse file may claim any size.
inline constexpr std::size_t largest_layout = 256 << 20;

/// The beginning of a file, at most `limit` bytes.
struct FileBytes {
  std::string bytes;
  std::size_t file_size = 0;
};

/// None for what cannot be read and for what is no regular file: a pipe would keep its reader
/// waiting.
[[nodiscard]] std::optional<FileBytes> read_regular_file(
    const std::string& path, std::size_t limit = std::numeric_limits<std::size_t>::max());

/// Gives a damaged file a name of its own that ends in `.damaged`, and returns it. Empty when the
/// folder does not allow that.
[[nodiscard]] std::string mark_damaged(const std::string& path);

/// SHA-256, in hexadecimal digits.
[[nodiscard]] std::string digest_of(const std::string& bytes);

}  // namespace zemblar

#pragma once

#include <string>
#include <string_view>

namespace zemblar::simulator {

/// Bytes as they stand in logs, as in "0a 00 ff".
[[nodiscard]] std::string hex(std::string_view bytes);

}  // namespace zemblar::simulator

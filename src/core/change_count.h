#pragma once

#include <array>
#include <cstddef>

namespace zemblar {

/// How far a change reaches into the document, in growing order.
enum class Change {
  state,     ///< any property of any object, even one that no file holds
  edit,      ///< part of an object's entry in a file
  structure  ///< which objects there are, or their order
};

/// Counts changes: compare two values of `get` to learn whether anything changed in between. A
/// change also counts as a change of each lesser kind.
class ChangeCount {
 public:
  using Count = unsigned long;

  static void add(Change change) {
    for (std::size_t kind = 0; kind <= static_cast<std::size_t>(change); ++kind) ++counts_[kind];
  }
  [[nodiscard]] static Count get(Change change) {
    return counts_[static_cast<std::size_t>(change)];
  }

 private:
  static inline std::array<Count, 3> counts_{};
};

}  // namespace zemblar

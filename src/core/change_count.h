#pragma once

#include <array>
#include <cstddef>

namespace zemblar {

/// How much something changes of the document, in growing order.
enum class Change {
  state,     ///< perhaps nothing of what a file would hold: any property of anything
  edit,      ///< something of an entry
  structure  ///< what there is, or its order
};

/// Counts changes, for whoever wants to know whether there were any since he looked last. Each
/// counts as one of the lesser kinds as well.
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

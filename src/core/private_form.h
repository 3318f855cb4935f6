#pragma once

#include "core/object_numbers.h"

namespace zemblar {

/// While it lives, entries are written and read in a form that only this program sees, not that of
/// layout files: the numbers are those given here, and every kind of object has an entry, those
/// that a file cannot hold as well.
class PrivateForm {
 public:
  explicit PrivateForm(ObjectNumbers& numbers);
  ~PrivateForm();
  PrivateForm(const PrivateForm&) = delete;
  PrivateForm& operator=(const PrivateForm&) = delete;

  [[nodiscard]] static bool is_used() { return depth_ != 0; }

 private:
  static inline unsigned depth_ = 0;
  ObjectNumbers* former_;
};

}  // namespace zemblar

#pragma once

#include <glibmm/ustring.h>

#include <functional>
#include <vector>

#include "core/private_form.h"

namespace zemblar {

/// While one exists, entries are written and read in the private form, but references are names: a
/// list of the section and of the names from there on, such as `[points, West Point, Curved]`. For
/// texts that are read in another layout, or by people.
///
/// A reference to an object that the current layout does not have leaves null, and is `missing`.
class NamedForm {
 public:
  NamedForm();
  ~NamedForm() = default;
  NamedForm(const NamedForm&) = delete;
  NamedForm& operator=(const NamedForm&) = delete;

  /// The one that exists, or null.
  [[nodiscard]] static NamedForm* used() { return used_; }

  static void write(YAML::Emitter& out, const Object& object);
  /// A function that looks the object up, to be called while this exists. Throws
  /// YAML::InvalidScalar for anything but a list of names.
  [[nodiscard]] std::function<Object*()> read(const YAML::Node& node);
  /// The names of the objects that were not found.
  [[nodiscard]] const std::vector<Glib::ustring>& missing() const { return missing_; }

 private:
  friend class PrivateForm;

  static inline NamedForm* used_ = nullptr;
  ObjectNumbers numbers_;
  PrivateForm form_{numbers_};
  std::vector<Glib::ustring> missing_;
};

}  // namespace zemblar

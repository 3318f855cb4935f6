#pragma once

#include <functional>
#include <set>
#include <string>

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
  /// A function that looks the object up and assigns it, to be called while this exists. `assign`
  /// gets null if there is none, and returns false for an object of another kind. Throws
  /// YAML::InvalidScalar for anything but a list of names.
  [[nodiscard]] std::function<bool()> read(const YAML::Node& node,
                                           std::function<bool(Object*)> assign);
  /// The names of the objects that were not assigned.
  [[nodiscard]] const std::set<std::string>& missing() const { return missing_; }

 private:
  friend class PrivateForm;

  static inline NamedForm* used_ = nullptr;
  ObjectNumbers numbers_;
  PrivateForm form_{numbers_};
  std::set<std::string> missing_;
};

}  // namespace zemblar

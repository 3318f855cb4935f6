#pragma once

#include <glibmm/ustring.h>

#include <string>
#include <unordered_map>

namespace zemblar {

class Object;

/// Who among one object's children has which name, in constant time.
///
/// Names are compared by their bytes: the collating comparison of Glib::ustring takes different
/// names ("Zone 2" and "Zone ²") for equal, and no hash index could agree with it.
class SiblingNames {
 public:
  [[nodiscard]] Object* find(const Glib::ustring& name) const;
  void insert(const Glib::ustring& name, Object* child);
  /// Forgets the name if it is `child`'s.
  void erase(const Glib::ustring& name, const Object* child);

  /// `format` composed with the lowest number from 1 whose name nobody has. A format without a
  /// place for the number yields itself.
  [[nodiscard]] Glib::ustring free_name(const Glib::ustring& format);

 private:
  std::unordered_map<std::string, Object*> by_name_;
  // For each format: every smaller number is taken. Adding n children looks at each number once.
  std::unordered_map<std::string, unsigned> first_candidate_;
};

}  // namespace zemblar

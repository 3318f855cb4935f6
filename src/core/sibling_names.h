#pragma once

#include <glibmm/ustring.h>

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <string>
#include <vector>

namespace zemblar {

class Object;

/// Who among one object's children has which name, in constant time.
///
/// Names are compared by their bytes: the collating comparison of Glib::ustring takes different
/// names ("Zone 2" and "Zone ²") for equal, and no hash index could agree with it.
///
/// The index is one flat table of hashes and children, whose own names are compared: renaming ten
/// thousand children touches little else, where nodes of a map would each miss the cache.
class SiblingNames {
 public:
  [[nodiscard]] Object* find(const Glib::ustring& name) const;
  /// Does nothing when somebody has the name.
  void insert(const Glib::ustring& name, Object* child);
  /// Forgets the name if it is `child`'s.
  void erase(const Glib::ustring& name, const Object* child);

  /// `format` composed with the lowest number from 1 whose name nobody has. A format without a
  /// place for the number yields itself.
  [[nodiscard]] Glib::ustring free_name(const Glib::ustring& format);

 private:
  struct Slot {
    std::size_t hash = 0;
    Object* child = nullptr;  // null in a free slot
  };
  [[nodiscard]] std::size_t home(std::size_t hash) const { return hash & (slots_.size() - 1); }
  [[nodiscard]] std::size_t next(std::size_t at) const { return home(at + 1); }
  void put(const Slot& slot);
  void grow();
  void vacate(std::size_t hole);

  std::vector<Slot> slots_;  // a power of two, at most half of them taken; empty at first
  std::size_t taken_ = 0;
  /// Every smaller number is taken, so adding n children looks at each number once.
  struct Candidate {
    std::string format;
    unsigned number = 1;
  };
  unsigned& candidate(const Glib::ustring& format);

  // Siblings have few formats, and most have one.
  boost::container::small_vector<Candidate, 1> candidates_;
};

}  // namespace zemblar

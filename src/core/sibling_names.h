#pragma once

#include <glibmm/ustring.h>

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <string>
#include <vector>

namespace zemblar {

class Object;

/// Finds an object's child by name, in constant time.
///
/// Names are compared by their bytes: the collating comparison of Glib::ustring takes different
/// names ("Zone 2" and "Zone ²") for equal, which no hash index can do.
///
/// The index is one flat table of hashes and children; a name is compared with that of the child.
/// So renaming ten thousand children touches little memory, where each node of a map would miss the
/// cache.
class SiblingNames {
 public:
  [[nodiscard]] Object* find(const Glib::ustring& name) const;
  /// Does nothing when a child has the name already.
  void insert(const Glib::ustring& name, Object* child);
  /// Removes the name if it belongs to `child`.
  void erase(const Glib::ustring& name, const Object* child);

  /// `format` composed with the lowest number, from 1, that gives a free name. Returns a format
  /// without a place for the number unchanged.
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

  std::vector<Slot> slots_;  // a power of two of slots, at most half of them taken; empty at first
  std::size_t taken_ = 0;
  /// The lowest number that may be free for a format; all below are taken. So adding n children
  /// tries each number once.
  struct Candidate {
    std::string format;
    unsigned number = 1;
  };
  unsigned& candidate(const Glib::ustring& format);

  // Siblings have few formats; most have one.
  boost::container::small_vector<Candidate, 1> candidates_;
};

}  // namespace zemblar

#pragma once

#include <unordered_map>

namespace zemblar {

class Object;

/// The numbers by which entries of a file refer to objects.
class ObjectNumbers {
 public:
  /// The object's number; the next free one when it has none yet.
  [[nodiscard]] unsigned number_of(const Object* object);
  /// One that no object will have.
  [[nodiscard]] unsigned spare() { return next_++; }
  /// Null for a number that no object has.
  [[nodiscard]] Object* find(unsigned number) const;
  /// False when an object has that number.
  bool give(Object* object, unsigned number);
  /// The number stays unused until it is given again.
  void forget(const Object* object);
  void clear() { *this = {}; }

 private:
  std::unordered_map<const Object*, unsigned> numbers_;
  std::unordered_map<unsigned, Object*> objects_;
  unsigned next_ = 0;
};

}  // namespace zemblar

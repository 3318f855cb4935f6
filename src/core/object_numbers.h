#pragma once

#include <algorithm>
#include <unordered_map>

namespace zemblar {

class Object;

/// Numbers by which objects of class T refer to each other in a text.
template <typename T>
class NumberTable {
 public:
  /// The object's number. Assigns the next free number when the object has none.
  [[nodiscard]] unsigned number_of(const T* object) {
    const auto [entry, is_new] = numbers_.try_emplace(object, next_);
    if (is_new) objects_[next_++] = const_cast<T*>(object);
    return entry->second;
  }
  /// A number that no object has or will get.
  [[nodiscard]] unsigned spare() { return next_++; }
  /// The object with this number, or null.
  [[nodiscard]] T* find(unsigned number) const {
    const auto found = objects_.find(number);
    return found == objects_.end() ? nullptr : found->second;
  }
  /// Assigns a given number. False when another object has it.
  bool assign(T* object, unsigned number) {
    if (!objects_.emplace(number, object).second) return false;
    numbers_[object] = number;
    next_ = std::max(next_, number + 1);
    return true;
  }
  /// Removes the object. Its number is not used again unless `assign` gives it to an object.
  void forget(const T* object) {
    const auto entry = numbers_.find(object);
    if (entry == numbers_.end()) return;
    objects_.erase(entry->second);
    numbers_.erase(entry);
  }
  void clear() { *this = {}; }

 private:
  std::unordered_map<const T*, unsigned> numbers_;
  std::unordered_map<unsigned, T*> objects_;
  unsigned next_ = 0;
};

/// The numbers by which entries of a file refer to objects.
using ObjectNumbers = NumberTable<Object>;

}  // namespace zemblar

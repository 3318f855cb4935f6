#pragma once

#include <algorithm>
#include <unordered_map>

namespace zemblar {

class Object;

/// Numbers for objects of class T, which refer to each other in a text.
template <typename T>
class NumberTable {
 public:
  /// The object's number; the next free one when it has none yet.
  [[nodiscard]] unsigned number_of(const T* object) {
    const auto [entry, is_new] = numbers_.try_emplace(object, next_);
    if (is_new) objects_[next_++] = const_cast<T*>(object);
    return entry->second;
  }
  /// One that no object will have.
  [[nodiscard]] unsigned spare() { return next_++; }
  /// Null for a number that no object has.
  [[nodiscard]] T* find(unsigned number) const {
    const auto found = objects_.find(number);
    return found == objects_.end() ? nullptr : found->second;
  }
  /// False when an object has that number.
  bool give(T* object, unsigned number) {
    if (!objects_.emplace(number, object).second) return false;
    numbers_[object] = number;
    next_ = std::max(next_, number + 1);
    return true;
  }
  /// The number stays unused until it is given again.
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

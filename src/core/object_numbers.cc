#include "core/object_numbers.h"

#include <algorithm>

namespace zemblar {

unsigned ObjectNumbers::number_of(const Object* object) {
  const auto [entry, is_new] = numbers_.try_emplace(object, next_);
  if (is_new) objects_[next_++] = const_cast<Object*>(object);
  return entry->second;
}

Object* ObjectNumbers::find(unsigned number) const {
  const auto found = objects_.find(number);
  return found == objects_.end() ? nullptr : found->second;
}

bool ObjectNumbers::give(Object* object, unsigned number) {
  if (!objects_.emplace(number, object).second) return false;
  numbers_[object] = number;
  next_ = std::max(next_, number + 1);
  return true;
}

void ObjectNumbers::forget(const Object* object) {
  const auto entry = numbers_.find(object);
  if (entry == numbers_.end()) return;
  objects_.erase(entry->second);
  numbers_.erase(entry);
}

}  // namespace zemblar

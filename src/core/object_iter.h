#pragma once

#include <glib.h>

#include <cstddef>
#include <iterator>

namespace zemblar {

class Object;

/// Walks the children of one object in their order.
///
/// Holds the nodes of the parent and of the current child; the current node is null at the end.
/// Moving by n takes n steps along the sibling chain. Equality compares the current node only: the
/// end iterators of different parents are equal.
class ObjectIter {
 public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = Object*;
  using difference_type = std::ptrdiff_t;
  using pointer = Object*;
  using reference = Object*;

  ObjectIter() = default;
  ObjectIter(GNode* parent, GNode* current) : parent_(parent), current_(current) {}
  /// Points at `object` among its siblings.
  explicit ObjectIter(const Object& object);

  Object* operator*() const;
  Object* operator->() const { return **this; }

  ObjectIter& operator++();
  /// Decrementing the end gives the last child.
  ObjectIter& operator--();
  ObjectIter operator++(int);
  ObjectIter operator--(int);
  ObjectIter& operator+=(difference_type n);
  ObjectIter& operator-=(difference_type n) { return *this += -n; }
  ObjectIter operator+(difference_type n) const { return ObjectIter(*this) += n; }
  ObjectIter operator-(difference_type n) const { return ObjectIter(*this) -= n; }

  bool operator==(const ObjectIter& other) const { return current_ == other.current_; }
  bool operator!=(const ObjectIter& other) const { return current_ != other.current_; }
  /// True if both have the same parent and this one is at or before `other`.
  bool operator<=(const ObjectIter& other) const;
  /// True if both have the same parent and this one is at or after `other`.
  bool operator>=(const ObjectIter& other) const;
  /// Throws std::runtime_error when the parents differ.
  difference_type operator-(const ObjectIter& other) const;

  explicit operator bool() const { return current_ != nullptr; }

 private:
  [[nodiscard]] difference_type position() const;

  GNode* parent_ = nullptr;
  GNode* current_ = nullptr;
};

}  // namespace zemblar

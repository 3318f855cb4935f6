#pragma once

#include <glib.h>

#include <cstddef>
#include <iterator>

namespace zemblar {

class Object;

/// Walks the children of one object in their order.
///
/// A value of two nodes, the parent's and the current child's; a null current node is the end.
/// Steps walk the sibling chain, so a jump costs its distance. Equality looks at the current node
/// only: the ends of different parents are equal.
class ObjectIter {
 public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = Object*;
  using difference_type = std::ptrdiff_t;
  using pointer = Object*;
  using reference = Object*;

  ObjectIter() = default;
  ObjectIter(GNode* parent, GNode* current) : parent_(parent), current_(current) {}
  /// Stands at `object` among its siblings.
  explicit ObjectIter(const Object& object);

  Object* operator*() const;
  Object* operator->() const { return **this; }

  ObjectIter& operator++();
  /// From the end this goes to the last child.
  ObjectIter& operator--();
  ObjectIter operator++(int);
  ObjectIter operator--(int);
  ObjectIter& operator+=(difference_type n);
  ObjectIter& operator-=(difference_type n) { return *this += -n; }
  ObjectIter operator+(difference_type n) const { return ObjectIter(*this) += n; }
  ObjectIter operator-(difference_type n) const { return ObjectIter(*this) -= n; }

  bool operator==(const ObjectIter& other) const { return current_ == other.current_; }
  bool operator!=(const ObjectIter& other) const { return current_ != other.current_; }
  /// Same parent, and walking from `other` towards the start meets this.
  bool operator<=(const ObjectIter& other) const;
  /// Same parent, and walking from `other` towards the end meets this.
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

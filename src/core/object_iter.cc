#include "core/object_iter.h"

#include <stdexcept>

#include "core/object.h"

namespace zemblar {

ObjectIter::ObjectIter(const Object& object)
    : parent_(object.gnode()->parent), current_(object.gnode()) {}

Object* ObjectIter::operator*() const {
  return Object::of(current_);
}

ObjectIter& ObjectIter::operator++() {
  if (current_) current_ = current_->next;
  return *this;
}

ObjectIter& ObjectIter::operator--() {
  if (current_) {
    current_ = current_->prev;
  } else if (parent_) {
    current_ = g_node_last_child(parent_);
  }
  return *this;
}

ObjectIter ObjectIter::operator++(int) {
  auto before = *this;
  ++*this;
  return before;
}

ObjectIter ObjectIter::operator--(int) {
  auto before = *this;
  --*this;
  return before;
}

ObjectIter& ObjectIter::operator+=(difference_type n) {
  for (; n > 0; --n) ++*this;
  for (; n < 0; ++n) --*this;
  return *this;
}

bool ObjectIter::operator<=(const ObjectIter& other) const {
  return parent_ == other.parent_ && position() <= other.position();
}

bool ObjectIter::operator>=(const ObjectIter& other) const {
  return parent_ == other.parent_ && position() >= other.position();
}

ObjectIter::difference_type ObjectIter::operator-(const ObjectIter& other) const {
  if (parent_ != other.parent_) {
    throw std::runtime_error("ObjectIter: in b - a: a and b have different parents");
  }
  return position() - other.position();
}

ObjectIter::difference_type ObjectIter::position() const {
  if (!parent_) return 0;
  return current_ ? g_node_child_position(parent_, current_)
                  : static_cast<difference_type>(g_node_n_children(parent_));
}

}  // namespace zemblar

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/object_numbers.h"

namespace YAML {
class Emitter;
}

namespace zemblar {

class Object;

/// The current document as text in the private form, with every kind of object. Made part by part,
/// so that other work can be done in between.
///
/// Abandon it as soon as an object is added or ends, the order changes, or another layout becomes
/// current: compare `ChangeCount::get(Change::structure)`. Other changes made meanwhile may be in
/// the text or not.
class DocumentText {
 public:
  DocumentText();
  ~DocumentText();
  DocumentText(const DocumentText&) = delete;
  DocumentText& operator=(const DocumentText&) = delete;

  /// Writes one object, or some dozens of a view's diagram objects. False when everything is
  /// written.
  bool write_part();
  /// Length of the text so far, in bytes.
  [[nodiscard]] std::size_t size() const;
  /// The whole text; call when everything is written. Valid as long as this object.
  [[nodiscard]] std::string_view text() const;

  /// The whole text in one call. Blocks the main loop for some 10 µs per object.
  [[nodiscard]] static std::string whole();

 private:
  bool find_next();

  ObjectNumbers numbers_;
  std::unique_ptr<YAML::Emitter> out_;
  int section_ = -1;
  const Object* object_ = nullptr;  // the object being written, or the next one
  unsigned part_ = 0;               // next part of `object_`
};

}  // namespace zemblar

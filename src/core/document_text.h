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
/// As soon as an object is added or ends, or the order changes, or another layout becomes current,
/// it must not be continued: `ChangeCount` of `Change::structure` tells. Other changes may be in
/// the text or not.
class DocumentText {
 public:
  DocumentText();
  ~DocumentText();
  DocumentText(const DocumentText&) = delete;
  DocumentText& operator=(const DocumentText&) = delete;

  /// Writes one object, or some dozens of what a view shows. False when everything is written.
  bool write_part();
  /// Of what is written, in bytes.
  [[nodiscard]] std::size_t size() const;
  /// The whole text, when everything is written; as long as this lives.
  [[nodiscard]] std::string_view text() const;

  /// All at once. Keeps the main loop waiting: some 10 µs for each object.
  [[nodiscard]] static std::string whole();

 private:
  bool find_next();

  ObjectNumbers numbers_;
  std::unique_ptr<YAML::Emitter> out_;
  int section_ = -1;
  const Object* object_ = nullptr;  // the next one, or in the middle
  unsigned part_ = 0;               // of it
};

}  // namespace zemblar

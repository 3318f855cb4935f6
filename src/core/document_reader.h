#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>
#include <string_view>

namespace zemblar {

/// Called with the parts of a document, in the order in which the document has them.
struct DocumentParts {
  std::function<void(const YAML::Node& title)> title;
  std::function<void(const YAML::Node& entry)> entry;
};

/// Reads the first YAML document in the bytes, and hands out the value of `title` and each entry of
/// `objects` as soon as it is complete. No more than one entry is in memory at a time, together
/// with those that have an anchor. Other keys, and a root that is no mapping, are ignored.
///
/// False when there is no document. Throws the exceptions of the parser and of `NodeBuilder`, and
/// YAML::InvalidNode when `objects` is neither a sequence nor null.
bool read_document(std::string_view bytes, const DocumentParts& parts);

}  // namespace zemblar

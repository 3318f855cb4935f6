#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>
#include <string_view>

namespace zemblar {

/// What is done with the parts of a document, in their order there.
struct DocumentParts {
  std::function<void(const YAML::Node& title)> title;
  std::function<void(const YAML::Node& entry)> entry;
};

/// Reads the first YAML document in the bytes, and hands out the value of `title` and each entry of
/// `objects` as soon as it is complete. No more than one entry is in memory at a time, together
/// with those that have an anchor. Other keys, and a root that is no mapping, hold nothing.
///
/// False when there is no document. Throws what the parser throws, what `NodeBuilder` refuses, and
/// YAML::InvalidNode for `objects` that are neither a sequence nor null.
bool read_document(std::string_view bytes, const DocumentParts& parts);

}  // namespace zemblar

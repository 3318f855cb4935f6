#pragma once

#include <string_view>

namespace YAML {
class EventHandler;
}

namespace zemblar {

/// Reads YAML in the narrow form that the program itself writes: block mappings and sequences that
/// are indented by two, one-line scalars that are plain or in quotes without escapes, flat flow
/// sequences, local tags. The library's parser takes some ten times as long for the same events.
///
/// True when the whole text has that form: the handler has been told of one document, exactly as
/// by the library. False, with nothing told, for any other text; it may be YAML all the same.
/// Throws what the handler throws.
bool read_plain_yaml(std::string_view text, YAML::EventHandler& handler);

}  // namespace zemblar

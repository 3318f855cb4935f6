#pragma once

#include <string_view>

namespace YAML {
class EventHandler;
}

namespace zemblar {

/// Reads YAML in the narrow form that the program itself writes: block mappings and sequences
/// indented by two, one-line scalars that are plain or in quotes without escapes, flat flow
/// sequences, local tags. The library's parser takes some ten times as long for the same events.
///
/// True when the whole text has that form; the handler has then received the same events of one
/// document as from the library. False for any other text, YAML or not; the handler has then
/// received nothing. Throws what the handler throws.
bool read_plain_yaml(std::string_view text, YAML::EventHandler& handler);

}  // namespace zemblar

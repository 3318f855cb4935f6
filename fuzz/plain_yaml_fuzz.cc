// Whatever the reader of the program's own form of YAML takes, it must read as the library does.

#include "core/plain_yaml.h"

#include <cstdint>

#include "fuzz/require.h"
#include "tests/support/yaml_events.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  zemblar::test::YamlEvents events;
  if (zemblar::read_plain_yaml(text, events)) {
    zemblar::require(events.text == zemblar::test::YamlEvents::by_the_library(text),
                     "not as by the library\n");
  } else {
    zemblar::require(events.text.empty(), "not as by the library\n");
  }
  return 0;
}

// Whatever the reader of the program's own form of YAML takes, it must read as the library does.

#include "core/plain_yaml.h"
#include "fuzz/fuzz.h"
#include "tests/support/yaml_events.h"

void zemblar::try_input(std::string_view input) {
  const std::string text(input);
  test::YamlEvents events;
  const bool is_taken = read_plain_yaml(text, events);
  require(events.text == (is_taken ? test::YamlEvents::by_the_library(text) : ""),
          "not as by the library\n");
}

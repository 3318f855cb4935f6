#include "core/plain_yaml.h"

#include <glibmm/fileutils.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "source_dir.h"
#include "tests/support/yaml_events.h"

namespace zemblar::test {
namespace {

const std::vector<std::string> plain_texts = {
    "%YAML 1.2\ntitle: New Layout\nobjects:\n  - !lok\n    name: Lök 日 1\n    decoders:\n"
    "      - type: DCC 128\n        device: ~\n        address: !long 3\n"
    "        speed: !reverse 0.5\n    functions:\n      []\n  - !zone\n"
    "    left: [12, state:Straight]\n    invert: false\n",
    "title: \"a: b\"\nobjects:\n  - !script\n    conditions:\n      - [When, occupied, Any, true]\n"
    "      - [And, lok-speed, ~, eq, 0, \"%\"]\n    links:\n      common: ~\n"
    "      state:A b: [0, \"x: y\"]\n",
    "a: b\nc:\n  d:\n    - e: f\n      g: -40.5\n    - !x/y\n      h: [\"q\", ~, -1]\n"
    "  i: ../x (y)+z\nj: /k\n",
};

/// The text after one to three slips of a hand.
std::string with_slips(std::string text, std::mt19937& random) {
  static const std::vector<std::string> pieces = {
      " ",  "\n",   "-",   ":",   ",",   "[",  "]",    "{",    "}",           "#",  "&a ",
      "*a", "!",    "|",   ">",   "'",   "\"", "%",    "@",    "`",           "?",  "~",
      ".",  "\\",   "\t",  "\r",  "<<",  "é",  "\xc3", "- ",   ": ",          "  ", " #",
      "~",  "null", "---", "...", "!x ", "[]", "{}",   "\"\"", "\xe2\x80\xa8"};
  const auto below = [&random](std::size_t count) { return random() % count; };
  for (auto slips = 1 + below(3); slips > 0; --slips) {
    const auto place = below(text.size());
    switch (below(3)) {
      case 0:
        text.insert(place, pieces[below(pieces.size())]);
        break;
      case 1:
        text.erase(place, 1 + below(3));
        break;
      default:
        text.insert(place, text.substr(below(text.size()), below(14)));
    }
  }
  return text;
}

TEST(PlainYaml, is_read_as_by_the_library_or_left_to_it) {
  auto texts = plain_texts;
  for (const auto* name : {"sample", "club"}) {
    texts.push_back(
        Glib::file_get_contents(ZEMBLAR_SOURCE_DIR "/data/layouts/" + std::string(name) + ".zblt"));
  }
  for (const auto& text : texts) {
    YamlEvents events;
    EXPECT_TRUE(read_plain_yaml(text, events)) << text;
    EXPECT_EQ(events.text, YamlEvents::by_the_library(text));
  }
  std::mt19937 random(1);
  unsigned taken = 0;
  for (int i = 0; i < 20'000; ++i) {
    const auto text = with_slips(plain_texts[random() % plain_texts.size()], random);
    YamlEvents events;
    if (read_plain_yaml(text, events)) {
      ++taken;
      ASSERT_EQ(events.text, YamlEvents::by_the_library(text)) << text;
    } else {
      ASSERT_EQ(events.text, "") << text;
    }
  }
  EXPECT_GT(taken, 1000u);
}

}  // namespace
}  // namespace zemblar::test

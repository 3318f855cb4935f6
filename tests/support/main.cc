#include <giomm/init.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "tests/support/layout_fixture.h"

int main(int argc, char** argv) {
  // Death tests fork: the threadsafe style starts afresh, so that no fiber stack is inherited.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // What the program remembers for the user is neither read nor written. A death test has the home
  // of its parent, since nobody would remove its own.
  std::optional<zemblar::test::TemporaryFolder> home;
  if (std::none_of(argv, argv + argc, [](const std::string_view argument) {
        return argument.starts_with("--gtest_internal");
      })) {
    home.emplace();
    g_setenv("XDG_CONFIG_HOME", home->path().c_str(), TRUE);
  }
  testing::InitGoogleMock(&argc, argv);
  Gio::init();
  return RUN_ALL_TESTS();
}

#include <giomm/init.h>
#include <gmock/gmock.h>

int main(int argc, char** argv) {
  // Death tests fork: the threadsafe style starts afresh, so that no fiber stack is inherited.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  testing::InitGoogleMock(&argc, argv);
  Gio::init();
  return RUN_ALL_TESTS();
}

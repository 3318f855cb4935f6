#include "runtime/busy_lock.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/fiber.h"

namespace zemblar {
namespace {

class Device : public Busy {
 public:
  bool active() const override { return active_; }
  void deactivate() {
    active_ = false;
    wake_waiters();
  }

 private:
  bool active_ = true;
};

/// Fibers that each hold a conversation with one device until the test ends it.
class Conversations : public testing::Test {
 protected:
  void begin(char name) {
    fiber::spawn([this, name] {
      try {
        BusyLock lock(device.get(), true);
        log += name;
        fiber::yield([this](fiber* f) { holder = f; });
        log += '-';
      } catch (const DeviceInactiveException& error) {
        EXPECT_STREQ(error.what(), "Device Inactive");
        log += std::string("!") + name;
      } catch (int) {
        log += 'x';
      }
    });
  }

  void end() { fiber::resume(std::exchange(holder, nullptr), 0); }

  std::unique_ptr<Device> device = std::make_unique<Device>();
  fiber* holder = nullptr;
  std::string log;
};

TEST_F(Conversations, are_held_in_order_of_arrival) {
  for (const char name : {'a', 'b', 'c'}) begin(name);
  EXPECT_EQ(log, "a");
  end();
  EXPECT_EQ(log, "a-b") << "the next takes the device inside the release";
  begin('d');
  end();
  end();
  EXPECT_TRUE(device->busy());
  end();
  EXPECT_EQ(log, "a-b-c-d-");
  EXPECT_FALSE(device->busy());
}

TEST_F(Conversations, end_when_an_exception_passes) {
  begin('a');
  begin('b');
  try {
    throw 1;
  } catch (...) {
    fiber::resume_exception(std::exchange(holder, nullptr));
  }
  EXPECT_EQ(log, "abx") << "the next one begins during the unwinding";
  end();
  EXPECT_FALSE(device->busy());
}

TEST_F(Conversations, go_on_with_the_next_when_a_woken_one_does_not_take_the_device) {
  begin('a');
  fiber::spawn([this] {
    device->wait_free();
    log += 'w';
  });
  begin('b');
  end();
  EXPECT_EQ(log, "a-wb");
  end();
}

TEST_F(Conversations, are_refused_at_once_without_waiting) {
  {
    BusyLock needs_no_fiber(device.get(), false);
    EXPECT_TRUE(device->busy());
    try {
      BusyLock second(device.get(), false);
      ADD_FAILURE() << "took a busy device";
    } catch (const BusyException& error) {
      EXPECT_STREQ(error.what(), "Device Busy");
    }
    EXPECT_TRUE(device->busy()) << "a refusal releases nothing";
  }
  EXPECT_FALSE(device->busy());
  device->deactivate();
  BusyLock ignores_service(device.get(), false);
  EXPECT_TRUE(device->busy());
}

TEST_F(Conversations, are_called_off_when_the_device_goes_out_of_service) {
  for (const char name : {'a', 'b', 'c'}) begin(name);
  device->deactivate();
  EXPECT_EQ(log, "a!b!c");
  EXPECT_TRUE(device->busy()) << "the first one still holds it";
  end();
  EXPECT_FALSE(device->busy());
  begin('d');
  EXPECT_EQ(log, "a!b!c-!d") << "out of service counts also when free";
  EXPECT_FALSE(device->busy());
}

TEST_F(Conversations, survive_the_end_of_the_device) {
  for (const char name : {'a', 'b', 'c'}) begin(name);
  device.reset();
  EXPECT_EQ(log, "a!b!c");
  end();
  EXPECT_EQ(log, "a!b!c-");
}

TEST_F(Conversations, survive_a_device_destroyed_by_the_first_one_woken) {
  begin('a');
  fiber::spawn([this] {
    device->wait_free();
    device.reset();
  });
  begin('b');
  end();
  EXPECT_EQ(log, "a-!b");
}

}  // namespace
}  // namespace zemblar

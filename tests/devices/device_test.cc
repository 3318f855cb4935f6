#include "devices/device.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/property.h"
#include "devices/decoder_proxy.h"
#include "devices/default_device.h"
#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"
#include "support/layout_fixture.h"
#include "support/test_decoder.h"

namespace zemblar {
namespace {

using test::TestDecoder;
using Log = std::vector<std::string>;

/// A station in which every step waits until the test lets it go on.
class StepDevice : public Device {
 public:
  StepDevice() : Glib::ObjectBase("StepDevice"), Device("Step %1") {
    property_active().signal_changed().connect([this] { log.push_back("active notified"); });
  }

  /// Lets the conversation at hand end.
  void step(bool success = true) {
    succeed_ = success;
    fiber::resume(std::exchange(waiter_, nullptr), 0);
  }
  [[nodiscard]] bool talking() const { return waiter_ != nullptr; }
  [[nodiscard]] fiber* waiter() const { return waiter_; }

  int support = 1;
  bool wait_in_start = false;
  bool wait_in_stop = false;
  bool start_well = true;
  std::function<void()> on_stop;
  unsigned sent = 0;
  std::uint32_t last_speed = 99;
  Log log;

  int supports(std::string_view) const override { return support; }

 protected:
  bool start() override {
    log.push_back("start");
    if (wait_in_start) wait();
    if (!start_well) throw std::runtime_error("no answer");
    return succeed_;
  }
  void stop() override {
    log.push_back("stop");
    if (on_stop) on_stop();
    if (wait_in_stop) wait();
  }
  void power_on() override { track_power_is_on(); }
  void power_off() override { track_power_is_off(); }
  void update_speed(DrivenDecoder* decoder) override { drive(decoder, DecoderUpdate::speed_bit); }
  void update_direction(DrivenDecoder* decoder) override {
    drive(decoder, DecoderUpdate::direction_bit);
  }
  void update_function(DrivenDecoder* decoder, unsigned fn) override {
    drive(decoder, DecoderUpdate::function_bit(fn));
  }

 private:
  void wait() {
    const auto alive = liveness();
    fiber::yield([this](fiber* f) { waiter_ = f; });
    if (!*alive) throw DeviceInactiveException();
  }
  void drive(DrivenDecoder* decoder, std::uint32_t item) {
    DecoderTask task(this, decoder);
    if (!task.leads()) return;
    BusyLock lock(this, true);
    auto wanted = decoder->state();
    wanted.mask = item;
    wait();
    if (!succeed_) throw std::runtime_error("no answer");
    ++sent;
    last_speed = wanted.speed;
    task.finish(wanted);
  }

  bool succeed_ = true;
  fiber* waiter_ = nullptr;
};

class DeviceTest : public test::LayoutTest {
 protected:
  StepDevice* add_device(bool in_service = true) {
    auto* device = layout().get_devices().add(new StepDevice);
    if (in_service) device->set_active(true);
    device->log.clear();
    return device;
  }
  StepDevice* add_default_device() {
    auto* device = add_device();
    default_device().add_device(device);
    return device;
  }
  static DefaultDevice& default_device() { return layout().get_default_device(); }
  static std::size_t empty_answers(const Glib::RefPtr<TestDecoder>& decoder) {
    return static_cast<std::size_t>(
        std::ranges::count_if(decoder->answers, [](const auto& a) { return a.mask == 0; }));
  }
};

TEST_F(DeviceTest, announces_itself_only_after_a_start_that_succeeded) {
  auto* device = add_device(false);
  device->wait_in_start = true;
  std::vector<Device*> in_service;
  const ScopedConnection follow = sigc::connection(
      Device::signal_in_service().connect([&](Device& which) { in_service.push_back(&which); }));
  const auto try_start = [&](bool result, bool well) {
    device->log.clear();
    device->start_well = well;
    device->set_active(true);
    EXPECT_TRUE(device->active()) << "start can use the device";
    EXPECT_THROW(device->set_active(false), DeviceInactiveException);
    device->property_active() = false;
    EXPECT_TRUE(device->active()) << "the toolkit cannot be thrown at";
    EXPECT_EQ(Log{"start"}, device->log);
    device->step(result);
  };
  try_start(false, true);
  EXPECT_FALSE(device->active());
  try_start(true, false);
  EXPECT_FALSE(device->active());
  EXPECT_TRUE(in_service.empty());
  EXPECT_EQ(Log{"start"}, device->log);
  try_start(true, true);
  EXPECT_TRUE(device->active());
  EXPECT_EQ((Log{"start", "active notified"}), device->log);
  EXPECT_EQ(std::vector<Device*>{device}, in_service);
}

TEST_F(DeviceTest, keeps_operations_waiting_while_it_starts) {
  for (const bool success : {true, false}) {
    auto* device = add_device(false);
    device->wait_in_start = true;
    device->set_active(true);
    const auto decoder = TestDecoder::create(*device);
    decoder->want_speed(5);
    EXPECT_TRUE(decoder->answers.empty());
    device->step(success);
    if (success) device->step();
    EXPECT_EQ(success, decoder->up_to_date());
    EXPECT_EQ(1u, decoder->answers.size());
  }
}

TEST_F(DeviceTest, leaves_service_in_order_and_answers_each_decoder_once) {
  auto* device = add_device();
  const auto first = TestDecoder::create(*device, 1);
  const auto second = TestDecoder::create(*device, 2);
  first->want_speed(1);
  second->want_speed(2);
  device->on_stop = [&] {
    EXPECT_FALSE(device->active());
    EXPECT_TRUE(first->answers.empty());
    device->step(false);  // the conversation that is cut off unwinds meanwhile
  };
  bool woken = false;
  fiber::spawn([&] {
    EXPECT_THROW(device->wait_free(), DeviceInactiveException);
    woken = true;
  });
  device->wait_in_stop = true;
  device->set_active(false);
  EXPECT_EQ(Log{"stop"}, device->log);
  EXPECT_TRUE(woken);
  device->step();
  EXPECT_EQ((Log{"stop", "active notified"}), device->log);
  EXPECT_EQ(1u, first->answers.size());
  EXPECT_EQ(1u, second->answers.size());
  EXPECT_EQ(1u, empty_answers(first));

  // Out of service nothing is begun, and the next time works as the first.
  first->send();
  EXPECT_FALSE(device->talking());
  device->set_active(true);
  first->send();
  device->step();
  EXPECT_TRUE(first->up_to_date());
  device->on_stop = {};
  device->wait_in_stop = false;
}

TEST_F(DeviceTest, answers_a_task_that_unwinds_late_no_second_time) {
  auto* device = add_device();
  const auto decoder = TestDecoder::create(*device);
  decoder->persistent = false;
  decoder->want_speed(1);
  device->set_active(false);
  EXPECT_EQ(1u, decoder->answers.size());
  device->step(false);
  EXPECT_EQ(1u, decoder->answers.size());
}

TEST_F(DeviceTest, sends_the_newest_value_and_answers_in_order_of_arrival) {
  auto* device = add_device();
  const auto driving = TestDecoder::create(*device, 1);
  driving->want_speed(10);
  driving->want_speed(20);
  driving->want_speed(30);
  device->step();
  EXPECT_EQ(10u, device->last_speed) << "had been read when it went out";
  device->step();
  EXPECT_EQ(30u, device->last_speed);
  EXPECT_EQ(2u, device->sent);
  EXPECT_FALSE(device->talking());

  // Two that keep changing do not starve a third, whose message may be a brake.
  const auto other = TestDecoder::create(*device, 2);
  const auto braking = TestDecoder::create(*device, 3);
  driving->want_speed(1);
  other->want_speed(1);
  braking->want_speed(0);
  for (std::uint32_t speed = 2; speed < 6; ++speed) {
    device->step();
    driving->want_speed(speed);
    other->want_speed(speed);
  }
  EXPECT_TRUE(braking->up_to_date());
}

TEST_F(DeviceTest, releases_everyone_once_when_an_operation_fails) {
  auto* device = add_device();
  const auto failing = TestDecoder::create(*device, 1);
  const auto waiting = TestDecoder::create(*device, 2);
  failing->persistent = waiting->persistent = false;
  failing->want_speed(1);
  waiting->want_speed(2);
  device->step(false);
  EXPECT_EQ(1u, failing->answers.size());
  EXPECT_EQ(1u, waiting->answers.size());
  waiting->send();
  ASSERT_TRUE(device->talking()) << "the next update goes ahead";
  device->step();
  EXPECT_TRUE(waiting->up_to_date());
}

TEST_F(DeviceTest, can_be_destroyed_while_fibers_wait_in_it) {
  const std::pair<const char*, std::function<void(StepDevice&)>> states[] = {
      {"starting",
       [](StepDevice& device) { device.wait_in_start = true, device.set_active(true); }},
      {"talking", [](StepDevice& device) { device.set_active(true); }},
      {"stopping",
       [](StepDevice& device) {
         device.set_active(true);
         device.wait_in_stop = true;
         device.set_active(false);
       }},
  };
  for (const auto& [name, enter] : states) {
    SCOPED_TRACE(name);
    auto* device = add_device(false);
    enter(*device);
    const bool served = device->active();
    const auto leading = TestDecoder::create(*device, 1);
    const auto joined = TestDecoder::create(*device, 2);
    leading->want_speed(1);
    joined->want_speed(2);
    bool woken = false;
    fiber::spawn([&] {
      EXPECT_THROW(device->wait_free(), DeviceInactiveException);
      woken = true;
    });
    auto* suspended = device->waiter();
    device->destroy();
    EXPECT_TRUE(woken);
    EXPECT_EQ(served ? 1u : 0u, leading->answers.size());
    EXPECT_EQ(served ? 1u : 0u, empty_answers(joined));
    fiber::resume(suspended, 0);
    EXPECT_EQ(served ? 1u : 0u, leading->answers.size());
  }
}

TEST_F(DeviceTest, switches_power_only_in_service_and_when_it_differs) {
  auto* device = add_device(false);
  int notified = 0;
  device->property_track_power().signal_changed().connect([&] { ++notified; });
  device->set_track_power(true);
  EXPECT_EQ(0, notified);
  device->set_active(true);
  device->set_track_power(false);
  EXPECT_EQ(0, notified);
  device->property_track_power() = true;
  EXPECT_TRUE(device->track_power());
  device->track_power_is_on();
  EXPECT_EQ(2, notified) << "a repeated report is announced again";
}

TEST_F(DeviceTest, leaves_an_address_to_its_first_owner) {
  auto* device = add_device();
  auto* first = reinterpret_cast<Lok*>(1);
  auto* second = reinterpret_cast<Lok*>(2);
  EXPECT_TRUE(device->add_lok(Address(3), first));
  EXPECT_FALSE(device->add_lok(Address(3), second));
  EXPECT_FALSE(device->add_lok(Address(3), first));
  EXPECT_TRUE(device->add_lok(Address(3, true), second)) << "long 3 is another address";
  device->remove_lok(Address(3), second);
  EXPECT_EQ(first, device->find_lok(Address(3)));
  device->remove_lok(Address(3), first);
  EXPECT_EQ(nullptr, device->find_lok(Address(3)));
}

// --- The default device ---

TEST_F(DeviceTest, default_device_combines_what_its_members_support) {
  const std::vector<std::pair<std::vector<int>, int>> table = {
      {{}, 0},     {{0}, 0},    {{1}, 1},    {{2}, 2},    {{2, 2}, 2},    {{2, 1}, 1},
      {{1, 2}, 1}, {{0, 2}, 1}, {{2, 0}, 1}, {{0, 0}, 0}, {{2, 2, 0}, 1}, {{0, 1, 2}, 1}};
  for (const auto& [members, expected] : table) {
    std::vector<StepDevice*> devices;
    for (const auto support : members) {
      devices.push_back(add_default_device());
      devices.back()->support = support;
    }
    EXPECT_EQ(expected, default_device().supports("DCC")) << testing::PrintToString(members);
    for (auto* device : devices) device->destroy();
    EXPECT_TRUE(default_device().devices().empty());
  }
}

TEST_F(DeviceTest, default_device_is_answered_when_all_stations_are) {
  auto* one = add_default_device();
  auto* two = add_default_device();
  auto* idle = add_device(false);
  default_device().add_device(idle);
  const auto decoder = TestDecoder::create(default_device());
  decoder->want_speed(40);
  one->step();
  EXPECT_TRUE(decoder->answers.empty());
  two->step();
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(1u, decoder->answers.size());

  // One that fails is told again, and nobody else.
  const auto sent_by_one = one->sent;
  decoder->want_speed(41);
  two->step(false);
  two->step(false);
  two->step();
  EXPECT_FALSE(decoder->up_to_date());
  one->step();
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(sent_by_one + 1, one->sent);
  EXPECT_EQ(2u, decoder->answers.size());

  // One that is lost while its station talks answers as well.
  decoder->persistent = false;
  decoder->want_speed(42);
  two->step();
  auto* lost = one;
  auto* suspended = lost->waiter();
  lost->destroy();
  EXPECT_EQ(3u, decoder->answers.size());
  fiber::resume(suspended, 0);
  EXPECT_EQ(3u, decoder->answers.size());
}

TEST_F(DeviceTest, default_device_counts_nothing_as_delivered_that_a_station_has_missed) {
  auto* one = add_default_device();
  const auto decoder = TestDecoder::create(default_device());
  decoder->want_speed(40);
  auto* two = add_default_device();
  one->step();
  EXPECT_FALSE(decoder->up_to_date());
  one->step();
  two->step();
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(40u, two->last_speed);
}

TEST_F(DeviceTest, default_device_without_a_station_in_service_answers_nothing) {
  const auto decoder = TestDecoder::create(default_device());
  decoder->want_speed(40);
  default_device().add_device(add_device(false));
  decoder->send();
  EXPECT_TRUE(decoder->answers.empty());
  EXPECT_FALSE(decoder->up_to_date());
}

TEST_F(DeviceTest, default_device_ends_a_burst_of_speeds_at_the_last_on_every_station) {
  auto* one = add_default_device();
  auto* two = add_default_device();
  const auto decoder = TestDecoder::create(default_device());
  // The wish goes away and comes back while one station is slow: nobody keeps the one between.
  decoder->want_speed(1);
  one->step();
  decoder->want_speed(2);
  one->step();
  decoder->want_speed(1);
  while (one->talking()) one->step();
  while (one->talking() || two->talking()) (two->talking() ? two : one)->step();
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(1u, one->last_speed);
  EXPECT_EQ(1u, two->last_speed);

  const auto before = one->sent;
  for (std::uint32_t speed = 2; speed <= 50; ++speed) decoder->want_speed(speed);
  while (one->talking() || two->talking()) (one->talking() ? one : two)->step();
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(50u, one->last_speed);
  EXPECT_EQ(50u, two->last_speed);
  EXPECT_LE(one->sent - before, 3u);
  EXPECT_LE(decoder->answers.size(), 60u) << "and no storm of fan-outs between";
}

TEST_F(DeviceTest, default_device_does_not_hold_back_an_emergency_stop) {
  auto* station = add_default_device();
  const auto decoder = TestDecoder::create(default_device());
  decoder->want_speed(50);
  decoder->want_speed(DecoderUpdate::emergency_stop);
  station->step();
  station->step();
  EXPECT_EQ(DecoderUpdate::emergency_stop, station->last_speed);
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(DeviceTest, default_device_can_go_with_its_layout_while_a_fan_out_waits) {
  auto* station = add_default_device();
  const auto decoder = TestDecoder::create(default_device());
  decoder->persistent = false;
  decoder->want_speed(50);
  auto* suspended = station->waiter();
  layout().new_document(false);
  EXPECT_EQ(1u, decoder->answers.size());
  fiber::resume(suspended, 0);
  EXPECT_EQ(1u, decoder->answers.size());

  Log ends;
  add_device()->on_stop = [&] { ends.push_back("a device"); };
  default_device().signal_deleted().connect([&] { ends.push_back("the default device"); });
  layout().destroy();
  EXPECT_EQ((Log{"a device", "the default device"}), ends);
}

TEST(DecoderProxyTest, keeps_what_every_answer_delivered) {
  Layout::get(new Layout).new_document(false);
  const auto parent = TestDecoder::create(Layout::get().get_default_device());
  parent->want_speed(7);
  parent->want_function(2, true);
  const auto proxy = DecoderProxy::create(parent.operator->());
  EXPECT_EQ(DecoderUpdate::all_bits, proxy->state().mask);
  EXPECT_EQ(parent->get_address(), proxy->get_address());
  auto delivered = proxy->state();
  delivered.speed = 6;
  delivered.mask &= ~DecoderUpdate::function_bit(5);
  proxy->complete(delivered);
  proxy->complete(proxy->state());
  proxy->wait(2);  // both had come already: needs no fiber
  const auto expected =
      DecoderUpdate::all_bits & ~DecoderUpdate::speed_bit & ~DecoderUpdate::function_bit(5);
  EXPECT_EQ(expected, proxy->state().mask);
  EXPECT_DEATH(proxy->wait(-1), "count >= 0");
  EXPECT_DEATH(DecoderProxy::create(nullptr), "parent");
  Layout::get().destroy();
}

}  // namespace
}  // namespace zemblar

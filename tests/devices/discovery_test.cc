// The system's own device manager, with mocked devices. Runs under umockdev-wrapper.

#include <gtest/gtest.h>
#include <umockdev.h>

#include <glibmm/main.h>

#include <filesystem>
#include <map>

#include "core/layout.h"
#include "devices/liusb/device_liusb.h"
#include "devices/port/hw_list.h"
#include "devices/tessara/device_tessara_bus.h"
#include "runtime/timer.h"
#include "simulator/bus/tessara_master.h"

namespace zemblar::test {
namespace {

class Discovery : public testing::Test {
 protected:
  Discovery() : testbed_(umockdev_testbed_new()) {}
  ~Discovery() override { g_object_unref(testbed_); }

  /// A converter on the USB with one serial port, as "/dev/ttyUSB0"; the path of the port.
  std::string plug(const char* name, const char* vendor, const char* product) {
    g_autofree char* usb = umockdev_testbed_add_device(
        testbed_, "usb", (std::string("usb-") + name).c_str(), nullptr,  //
        "idVendor", vendor, "idProduct", product, "product", "A converter", "busnum", "1", "devnum",
        "5", nullptr,  //
        "DEVTYPE", "usb_device", nullptr);
    g_autofree char* port = umockdev_testbed_add_device(
        testbed_, "tty", name, usb, nullptr,  //
        "DEVNAME", (std::string("/dev/") + name).c_str(), "ID_VENDOR_ID", "ffff", nullptr);
    return port;
  }
  void pull(const std::string& path) {
    umockdev_testbed_uevent(testbed_, path.c_str(), "remove");
    umockdev_testbed_remove_device(testbed_, path.c_str());
  }
  static std::string names(HWSource& source) {
    std::string all;
    for (const auto& record : source.list()) {
      all += record.port_name + " " + record.hardware_ids.at(0) + "\n";
    }
    return all;
  }

  UMockdevTestbed* testbed_;
};

TEST_F(Discovery, finds_serial_ports_by_the_numbers_of_their_usb_device) {
  plug("ttyUSB0", "0403", "d780");
  const auto source = make_udev_source();
  EXPECT_EQ(names(*source), "/dev/ttyUSB0 USB\\VID_0403&PID_D780\n");
  EXPECT_EQ(source->list().at(0).description, "A converter");
}

TEST_F(Discovery, hears_of_what_is_plugged_in_and_pulled_out) {
  const auto source = make_udev_source();
  EXPECT_EQ(names(*source), "");
  int changes = 0;
  source->signal_changed().connect([&] { ++changes; });
  const auto wait_for = [&](int count) {
    for (int i = 0; i < 500 && changes < count; ++i) {
      Glib::MainContext::get_default()->iteration(false);
      g_usleep(2000);
    }
    return changes >= count;
  };
  const auto port = plug("ttyACM3", "16d0", "064d");
  EXPECT_TRUE(wait_for(1));
  EXPECT_EQ(names(*source), "/dev/ttyACM3 USB\\VID_16D0&PID_064D\n");
  const int before = changes;
  pull(port);
  EXPECT_TRUE(wait_for(before + 1));
  EXPECT_EQ(names(*source), "");
}

TEST_F(Discovery, makes_a_device_of_a_liusb_and_lets_it_wait_for_its_return) {
  Layout::get(new Layout).new_document(false);
  auto& devices = Layout::get().get_devices();
  HWList list(make_udev_source());
  plug("ttyUSB1", "0403", "6001");  // another converter
  const auto port = plug("ttyUSB0", "0403", "d780");
  list.rescan();
  EXPECT_EQ(list.count(), 2u);
  ASSERT_EQ(devices.child_count(), 1u);
  auto* const liusb = dynamic_cast<LIUSB*>(devices.child_at(0));
  ASSERT_NE(liusb, nullptr);
  umockdev_testbed_remove_device(testbed_, port.c_str());
  list.rescan();
  EXPECT_EQ(list.count(), 1u);
  plug("ttyUSB2", "0403", "d780");
  list.rescan();
  EXPECT_EQ(devices.child_count(), 1u);  // the one that waited took it
  Layout::get().new_document(false);
  list.refresh();
  EXPECT_EQ(Layout::get().get_devices().child_count(), 1u);
  Layout::get().destroy();
}

/// The system's list of ports, and simulated hardware at their other end.
class MockedPorts : public HWSource {
 public:
  MockedPorts() {
    real_->signal_changed().connect([this] { signal_changed().emit(); });
  }
  std::vector<HWDevice> list() override { return real_->list(); }
  std::unique_ptr<SerialLine> line_to(const HWDevice& record) override {
    const auto cable = cables.find(record.port_name);
    return cable == cables.end() ? make_tty_line() : cable->second.plug();
  }
  std::map<std::string, simulator::SerialCable> cables;

 private:
  std::unique_ptr<HWSource> real_ = make_udev_source();
};

TEST_F(Discovery, makes_a_bus_of_a_master_and_knows_it_again_when_it_returns) {
  using namespace std::chrono_literals;
  VirtualClock clock;
  Layout::get(new Layout).new_document(false);
  const auto& devices = Layout::get().get_devices();
  const auto port = plug("ttyACM0", "16d0", "064d");
  plug("ttyACM7", "16d0", "064e");  // another product
  auto owned = std::make_unique<MockedPorts>();
  auto& cables = owned->cables;
  HWList list(std::move(owned));
  const simulator::TessaraMaster master(cables["/dev/ttyACM0"]);
  const simulator::TessaraMaster again(cables["/dev/ttyACM1"]);

  list.rescan();
  EXPECT_EQ(list.count(), 2u);
  clock.advance(1s);
  ASSERT_EQ(devices.child_count(), 1u);
  auto* bus = dynamic_cast<DeviceTessaraBus*>(devices.child_at(0));
  ASSERT_TRUE(bus && bus->active());

  umockdev_testbed_remove_device(testbed_, port.c_str());
  list.rescan();
  clock.advance(1s);
  EXPECT_FALSE(bus->active());
  const auto returned = plug("ttyACM1", "16d0", "064d");
  list.rescan();
  clock.advance(1s);
  EXPECT_TRUE(bus->active());
  EXPECT_EQ(devices.child_count(), 1u);

  // Pulled out and in again, which the program sees when both have happened.
  const auto usb = std::filesystem::path(returned).parent_path();
  umockdev_testbed_set_attribute(testbed_, usb.c_str(), "devnum", "6");
  int falls = 0;
  const auto notice = bus->property_active().signal_changed().connect([&] { ++falls; });
  list.rescan();
  clock.advance(1s);
  EXPECT_EQ(falls, 2);
  EXPECT_TRUE(bus->active());

  // A new document has none, and the port is free again.
  Layout::get().new_document(true);
  clock.advance(1s);
  list.refresh();
  clock.advance(1s);
  EXPECT_EQ(Layout::get().get_devices().child_count(), 1u);
  Layout::get().destroy();
}

}  // namespace
}  // namespace zemblar::test

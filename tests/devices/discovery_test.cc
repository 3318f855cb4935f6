// The system's own device manager, with mocked devices. Runs under umockdev-wrapper.

#include <gtest/gtest.h>
#include <umockdev.h>

#include <glibmm/main.h>

#include "devices/hw_source.h"

namespace zemblar::test {
namespace {

class Discovery : public testing::Test {
 protected:
  Discovery() : testbed_(umockdev_testbed_new()) {}
  ~Discovery() override { g_object_unref(testbed_); }

  /// A converter on the USB with one serial port, as "/dev/ttyUSB0"; the path of the port.
  std::string plug(const char* name, const char* vendor, const char* product) {
    g_autofree char* usb = umockdev_testbed_add_device(
        testbed_, "usb", (std::string("usb-") + name).c_str(), nullptr,               //
        "idVendor", vendor, "idProduct", product, "product", "A converter", nullptr,  //
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

}  // namespace
}  // namespace zemblar::test

#pragma once

#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include "core/toplevel.h"
#include "devices/port/hw_list.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/serial_port_tessara.h"
#include "devices/tessara/tessara_class.h"
#include "runtime/fiber.h"
#include "simulator/bus/memory_hardware.h"
#include "simulator/bus/tessara_master.h"
#include "support/layout_fixture.h"
#include "support/link_steps.h"

namespace zemblar::test {

using namespace std::chrono_literals;
using namespace std::string_literals;
using simulator::SerialCable;
using simulator::TessaraMaster;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// What hangs on the bus in these tests: tells what it is and echoes the rest.
class GadgetHardware : public simulator::TessaraDevice {
 public:
  explicit GadgetHardware(std::string serial_nr = "G-1", unsigned speed = 0)
      : serial(std::move(serial_nr)), at_speed(speed) {}

  [[nodiscard]] unsigned speed() const override { return at_speed; }
  std::optional<std::string> execute(std::string_view message) override {
    if (message == "\0"s) return simulator::tessara_info("GADG", {0x1f});
    if (message == "\2"s) return serial;
    if (message.starts_with('\4')) at_speed = static_cast<unsigned char>(message[1]);
    return message.starts_with('\4') ? "" : std::string(message);
  }
  void restart() override { at_speed = 0; }

  std::string serial;
  unsigned at_speed;
};

/// The driver of one.
class Gadget : public DeviceTessara {
 public:
  Gadget() : Gadget(nullptr, 0) {}
  Gadget(DeviceTessaraBus* bus, std::uint8_t address)
      : Glib::ObjectBase("Gadget"), DeviceTessara("Gadget %1", bus, address) {}
  explicit Gadget(const YAML::Node& node, DeviceTessaraBus* bus = nullptr)
      : Glib::ObjectBase("Gadget"), DeviceTessara("Gadget %1", node, bus) {}
  void save(YAML::Emitter& out) const override {
    out << YAML::LocalTag("device/Tessara/GADG") << YAML::BeginMap;
    save_tessara(out);
    out << YAML::EndMap;
  }
  using DeviceTessara::give_up;

 protected:
  bool start() override {
    return bring_up([](const std::string&) {});
  }
};

inline const TessaraRegistration<Gadget> registration("GADG", [](DeviceTessara* device) {
  return probe_by_info(device, "GADG");
});

inline const HWDevice record{.hardware_ids = {"usb\\vid_16d0&pid_064d"}, .port_name = "ttyUSB0"};

/// A Tessara bus against a simulated master, over a cable in memory.
class TessaraTest : public LayoutTest {
 protected:
  ~TessaraTest() override {
    layout().get_devices().destroy_children();
    clock.advance(10s);
  }

  /// A master that is plugged in, as discovery tells it.
  struct Plugged {
    SerialCable cable{};
    TessaraMaster master{cable};
    Glib::RefPtr<SerialPortTessara> port{};
  };
  Plugged& plug_in(const std::string& serial = "TB-1", TessaraMaster::Options options = {},
                   std::chrono::milliseconds time = 1s) {
    plugged = std::make_unique<Plugged>();
    options.serial_nr = serial;
    plugged->master.options = options;
    for (auto& [address, hardware] : gadgets) plugged->master.attach(address, hardware);
    plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
    plugged->port->offer();
    clock.advance(time);
    return *plugged;
  }
  void pull_plug() {
    plugged->cable.unplug();
    plugged->port->remove();
    plugged->port.reset();
    clock.advance(0ms);
  }
  static DeviceTessaraBus* bus(unsigned n = 0) {
    return dynamic_cast<DeviceTessaraBus*>(layout().get_devices().child_at(n));
  }
  TessaraMaster& master() { return plugged->master; }

  /// What a call on a fiber has come to: its result, or "failed: " and why.
  template <typename Call>
  std::string result_of(const Call& call, std::chrono::milliseconds time = 10s) {
    auto result = std::make_shared<std::string>("nothing");
    fiber::spawn([result, call] {
      try {
        *result = call();
      } catch (const std::exception& error) {
        *result = "failed: "s + error.what();
      }
    });
    clock.advance(time);
    return *result;
  }

  VirtualClock clock;
  std::map<std::uint8_t, GadgetHardware&> gadgets;
  std::unique_ptr<Plugged> plugged;
};

}  // namespace zemblar::test

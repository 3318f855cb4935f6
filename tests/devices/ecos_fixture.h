#pragma once

#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/status.h"
#include "core/yaml_io.h"
#include "devices/default_device.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"
#include "simulator/railway/memory_station.h"
#include "support/layout_fixture.h"
#include "support/link_steps.h"
#include "support/test_decoder.h"

namespace zemblar::test {

using namespace std::chrono_literals;
using simulator::MemoryStation;
using testing::HasSubstr;
using Trace = std::vector<std::string>;

inline const Trace start_trace = {"request(1,view)", "request(10,view)", "get(1,status)"};

/// The items that reach the station, in order, without what surrounds them.
inline Trace values_of(const Trace& commands) {
  Trace values;
  std::ranges::copy_if(commands, std::back_inserter(values),
                       [](const auto& command) { return command.starts_with("set(10"); });
  return values;
}

/// An ECoS driver against a simulated station, over a stream in memory.
class ECoSTest : public LayoutTest {
 protected:
  ECoSTest() { station.add_locomotive(3, "Shunter"); }
  ~ECoSTest() override {
    // The devices go first: what their fibers still wait for ends in the time that follows.
    layout().get_devices().destroy_children();
    clock.advance(5s);
  }

  /// A station in the layout, in service unless the one at the far end prevents it.
  ECoS* add_ecos(MemoryStation& to) {
    auto* ecos = layout().get_devices().add(new ECoS(to.socket()));
    clock.advance(20ms);
    return ecos;
  }
  ECoS* add_ecos() { return add_ecos(station); }
  /// The same, with the trace of the start forgotten.
  ECoS* add_started_ecos() {
    auto* ecos = add_ecos();
    EXPECT_EQ(start_trace, station.take_commands());
    EXPECT_TRUE(ecos->active());
    return ecos;
  }
  /// Decoders that are out of date try again when a device comes into service.
  void resend_in_service(const Glib::RefPtr<TestDecoder>& decoder) {
    resend = sigc::connection(
        Device::signal_in_service().connect([decoder](Device&) { decoder->send(); }));
  }
  /// Attempts to connect, in milliseconds since the test began.
  std::vector<long> attempts() {
    std::vector<long> times;
    for (const auto attempt : station.attempts) {
      times.push_back(
          std::chrono::duration_cast<std::chrono::milliseconds>(attempt - began).count());
    }
    return times;
  }

  VirtualClock clock;
  Clock::time_point began = clock.now();
  MemoryStation station;
  ScopedConnection resend;
};

inline Trace controlled(const std::string& command) {
  return {"request(1000,control,force)", command, "release(1000,control)"};
}

}  // namespace zemblar::test

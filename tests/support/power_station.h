#pragma once

#include <yaml-cpp/yaml.h>

#include "devices/command_station.h"

namespace zemblar::test {

/// Switches its power as it is told.
class PowerStation : public CommandStation {
 public:
  PowerStation() : Glib::ObjectBase("PowerStation"), CommandStation("Booster %1", "by-default") {
    set_link(LinkPhase::looking_for_hardware);
  }
  void save(YAML::Emitter& out) const override {
    out << YAML::LocalTag("power-station") << YAML::BeginMap << YAML::EndMap;
  }
  void lose() { set_link(LinkPhase::lost, "The cable was pulled."); }

 protected:
  bool start() override {
    join_default();
    return true;
  }
  DecoderUpdate deliver(DrivenDecoder& decoder, std::uint32_t) override { return decoder.state(); }
  void switch_power(bool on) override { on ? track_power_is_on() : track_power_is_off(); }
};

}  // namespace zemblar::test

#pragma once

#include "devices/liusb/device_liusb.h"
#include "simulator/bus/serial_cable.h"
#include "simulator/railway/station_link.h"
#include "simulator/stations/liusb_interface.h"

namespace zemblar::simulator {

/// A LI-USB and the station behind it, on a serial cable in memory.
class LiUsbStationLink : public StationLink {
 public:
  LiUsbStationLink();
  ~LiUsbStationLink() override;

  [[nodiscard]] const char* name() const override { return "LI-USB"; }
  [[nodiscard]] LIUSB& device() override { return *device_; }
  [[nodiscard]] std::chrono::milliseconds allowed() const override;
  [[nodiscard]] std::optional<DecoderUpdate> locomotive(unsigned address) const override;
  [[nodiscard]] bool power() const override { return hardware_.station.power; }
  [[nodiscard]] bool tells_refusals() const override { return false; }

 protected:
  void apply(LinkFault fault, unsigned victim, Chance& chance) override;
  void lift(LinkFault fault, bool by_hand) override;

 private:
  void note(const LiUsbInterface::Message& request);
  void report_locomotive(const LiUsbInterface::Message& request);
  void plug_in();
  void pull_plug();

  SerialCable cable_;
  LiUsbInterface hardware_;
  Glib::RefPtr<SerialPortLIUSB> port_;
  LIUSB* device_;
  Timeout flood_;
};

}  // namespace zemblar::simulator

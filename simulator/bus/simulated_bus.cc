#include "simulator/bus/simulated_bus.h"

#include <glib-object.h>

#include "devices/device.h"
#include "simulator/bus/memory_hardware.h"
#include "simulator/trains/track_model.h"
#include "track/block.h"

namespace zemblar::simulator {

SimulatedBus::SimulatedBus(const std::string& port_name) : port_name_(port_name) {
  block_ending_ = Block::signal_ending().connect([this](Block* block) { wires_.erase(block); });
}

SimulatedBus::~SimulatedBus() = default;

ReaderHardware& SimulatedBus::add_reader(std::uint8_t address, unsigned inputs) {
  auto& reader = readers_[address];
  reader = std::make_unique<ReaderHardware>(inputs);
  reader->options.serial_nr = "RR-" + std::to_string(address);
  master.attach(address, *reader);
  return *reader;
}

void SimulatedBus::wire(const Block& block, std::uint8_t address, unsigned input) {
  wires_[&block] = {address, input};
}

void SimulatedBus::wire_to_input(const Block& block) {
  const Object* input = block.get_input();
  const auto* reader = input ? input->get_parent() : nullptr;
  if (!reader || !g_object_class_find_property(G_OBJECT_GET_CLASS(reader->gobj()), "address")) {
    return;
  }
  unsigned index = 0;
  for (const auto* sibling : *reader) {
    if (sibling == input) break;
    ++index;
  }
  unsigned char address = 0;
  reader->get_property("address", address);
  wire(block, address, index);
}

TrackDetector* SimulatedBus::detector_of(const Block* block) const {
  const auto wire = wires_.find(block);
  if (wire == wires_.end()) return nullptr;
  const auto [address, input] = wire->second;
  const auto reader = readers_.find(address);
  if (reader == readers_.end() || input >= reader->second->input_count()) return nullptr;
  return &reader->second->input(input);
}

void SimulatedBus::serve(TrackModel& model) {
  model.detector_of = [this](const Block* block) { return detector_of(block); };
}

HWDevice SimulatedBus::record() const {
  return {.object_name = "memory/" + port_name_,
          .description = "Tessara Bus",
          .hardware_ids = {"USB\\VID_16D0&PID_064D"},
          .port_name = port_name_};
}

void SimulatedBus::plug_into(MemoryHardware& hardware) {
  hardware_ = &hardware;
  hardware.plug_in(record(), [this] { return cable.plug(); });
}

void SimulatedBus::unplug() {
  cable.unplug();
  if (auto* hardware = std::exchange(hardware_, nullptr)) hardware->pull_out(record().object_name);
}

}  // namespace zemblar::simulator

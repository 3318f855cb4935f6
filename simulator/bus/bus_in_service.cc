#include "simulator/bus/bus_in_service.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "core/layout.h"
#include "core/status.h"
#include "devices/device.h"
#include "track/block.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto until_started = 5s;
constexpr auto longest_scan = 10min;

std::unique_ptr<HWSource> new_hardware(MemoryHardware*& hardware) {
  auto source = std::make_unique<MemoryHardware>();
  hardware = source.get();
  return source;
}

std::vector<Device*> devices_in(Object& parent) {
  std::vector<Device*> devices;
  for (auto* child : parent) {
    if (auto* device = dynamic_cast<Device*>(child)) devices.push_back(device);
  }
  return devices;
}

}  // namespace

BusInService::BusInService(VirtualClock& clock, unsigned readers)
    : clock_(clock), list_(new_hardware(hardware)) {
  for (unsigned i = 0; i < readers; ++i) bus.add_reader(address_of(i), inputs_each);
  bus.master.log = false;
  find_devices();
}

BusInService::~BusInService() = default;

void BusInService::find_devices() {
  const auto known = devices_in(Layout::get().get_devices());
  bus.plug_into(*hardware);
  clock_.advance(until_started);
  for (auto* device : devices_in(Layout::get().get_devices())) {
    if (std::ranges::find(known, device) == known.end()) master_ = device;
  }
  expect(master_ && master_->active(), "the master is not in service");
  set_scanning(true);
  const auto end = clock_.now() + longest_scan;
  while (scanning() && clock_.now() < end) clock_.advance(1s);
  expect(!scanning(), "the scan does not end");
  clock_.advance(until_started);
  readers_ = devices_in(*master_);
  std::ranges::sort(readers_, {}, [](Device* reader) {
    unsigned char address = 0;
    reader->get_property("address", address);
    return address;
  });
  expect(readers_.size() == bus.reader_count(), "not all readers were found");
  expect(all_in_service(), "not all readers are in service");
}

void BusInService::expect(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string(what) + ": " + get_status().raw());
}

Device& BusInService::input(unsigned reader, unsigned index) {
  return *devices_in(*readers_.at(reader)).at(index);
}

bool BusInService::all_in_service() {
  return master_->active() &&
         std::ranges::all_of(readers_, [](const Device* reader) { return reader->active(); });
}

void BusInService::assign(Block& block, unsigned reader, unsigned index) {
  block.set_input(&input(reader, index));
  bus.wire_to_input(block);
}

void BusInService::set_scanning(bool on) {
  master_->set_property("scanning", on);
}

bool BusInService::scanning() {
  bool on = false;
  master_->get_property("scanning", on);
  return on;
}

}  // namespace zemblar::simulator

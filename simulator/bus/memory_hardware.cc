#include "simulator/bus/memory_hardware.h"

#include <utility>

namespace zemblar::simulator {

void MemoryHardware::plug_in(const HWDevice& record, Plug plug) {
  auto& piece = pieces_[record.object_name] = {record, std::move(plug)};
  piece.record.instance = std::to_string(++plugged_);
  signal_changed().emit();
}

void MemoryHardware::pull_out(const std::string& object_name) {
  if (pieces_.erase(object_name) > 0) signal_changed().emit();
}

std::vector<HWDevice> MemoryHardware::list() {
  std::vector<HWDevice> records;
  for (const auto& [name, piece] : pieces_) records.push_back(piece.record);
  return records;
}

std::unique_ptr<SerialLine> MemoryHardware::line_to(const HWDevice& record) {
  return pieces_.at(record.object_name).plug();
}

}  // namespace zemblar::simulator

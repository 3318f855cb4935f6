#include "devices/tessara/device_tessara_railcom_reader_input.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "devices/tessara/device_tessara_railcom_reader.h"

namespace zemblar {

DeviceTessaraRailComReaderInput::DeviceTessaraRailComReaderInput()
    : Glib::ObjectBase("DeviceTessaraRailComReaderInput"), RailComDetector(_("Input %1")) {}

DeviceTessaraRailComReaderInput::DeviceTessaraRailComReaderInput(const YAML::Node& node)
    : DeviceTessaraRailComReaderInput() {
  load_identity(node);
}

void DeviceTessaraRailComReaderInput::on_packet(const std::string& dcc, const std::string& bytes) {
  std::rotate(packets_.begin(), packets_.end() - 1, packets_.end());
  packets_[0] = bytes;
  decode_newest(dcc);
}

void DeviceTessaraRailComReaderInput::on_repeat(const std::string& dcc, unsigned repeat_nr) {
  assert(repeat_nr && (repeat_nr < 4));
  const auto place = packets_.begin() + repeat_nr;
  std::rotate(packets_.begin(), place - 1, place);
  decode_newest(dcc);
}

// Handlers may let the next answers in, or end this input: the decoder reads a copy.
void DeviceTessaraRailComReaderInput::decode_newest(const std::string& dcc) {
  const auto bytes = packets_[0];
  hear(dcc, bytes);
}

void DeviceTessaraRailComReaderInput::tick(unsigned ms) {
  ticked_ += std::chrono::milliseconds(ms);
  forget_overdue();
}

const Device* DeviceTessaraRailComReaderInput::dcc_device() const {
  const auto* reader = dynamic_cast<const DeviceTessaraRailComReader*>(get_parent());
  return reader ? reader->get_dcc_device() : nullptr;
}

}  // namespace zemblar

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "devices/port/hw_source.h"

namespace zemblar::simulator {

/// A hardware source in memory, for simulated hardware that is plugged in and unplugged.
class MemoryHardware : public HWSource {
 public:
  /// Makes a line to the hardware's port; called for each port object.
  using Plug = std::function<std::unique_ptr<SerialLine>()>;

  /// Plugs hardware in; `object_name` is the key. Sets a new `instance` each time.
  void plug_in(const HWDevice& record, Plug plug);
  void pull_out(const std::string& object_name);

  [[nodiscard]] std::vector<HWDevice> list() override;
  [[nodiscard]] std::unique_ptr<SerialLine> line_to(const HWDevice& record) override;

 private:
  struct Piece {
    HWDevice record;
    Plug plug;
  };
  std::map<std::string, Piece> pieces_;
  unsigned plugged_ = 0;  // counts the calls of `plug_in`
};

}  // namespace zemblar::simulator

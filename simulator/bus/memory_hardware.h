#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "devices/port/hw_source.h"

namespace zemblar::simulator {

/// Serial hardware in memory that is plugged in and pulled out, as discovery finds it.
class MemoryHardware : public HWSource {
 public:
  /// Leads to the port; called for each port that is made of it.
  using Plug = std::function<std::unique_ptr<SerialLine>()>;

  /// Its `object_name` is the key. Each time is another `instance`.
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
  unsigned plugged_ = 0;  // how often something was plugged in
};

}  // namespace zemblar::simulator

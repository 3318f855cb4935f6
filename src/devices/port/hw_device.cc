#include "devices/port/hw_device.h"

#include <glib.h>

#include <algorithm>

namespace zemblar {

bool HWDevice::has_hardware_id(std::string_view id) const {
  return std::ranges::any_of(hardware_ids, [id](const std::string& own) {
    return own.size() == id.size() && g_ascii_strncasecmp(own.data(), id.data(), id.size()) == 0;
  });
}

}  // namespace zemblar

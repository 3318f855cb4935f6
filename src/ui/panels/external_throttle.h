#pragma once

#include "core/object.h"

namespace zemblar {

/// Represents a throttle outside the program. It has no keys in a layout file and no behaviour.
class ExternalThrottle : public Object {
 public:
  ExternalThrottle();
};

}  // namespace zemblar

#pragma once

#include "core/object.h"

namespace zemblar {

/// Stands for a throttle outside the program. Without keys and without behaviour of its own.
class ExternalThrottle : public Object {
 public:
  ExternalThrottle();
};

}  // namespace zemblar

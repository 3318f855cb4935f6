#include "devices/driven_decoder.h"

#include <cassert>

namespace zemblar {

bool DrivenDecoder::get_function(unsigned fn) const {
  assert(fn <= 28);
  return state().function(fn);
}

}  // namespace zemblar

// What libFuzzer calls.

#include <giomm/init.h>

#include "core/layout.h"
#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  Gio::init();
  zemblar::Layout::get().new_document(false);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zemblar::try_input({reinterpret_cast<const char*>(data), size});
  return 0;
}

// Opens any bytes as a layout. What opens must be written to bytes that open again and are written
// the same.

#include <giomm/init.h>
#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "core/layout.h"
#include "core/status.h"

namespace {

using zemblar::Layout;

[[noreturn]] void report(const char* what, const std::string& bytes) {
  std::cerr << what << ": " << zemblar::get_status() << "\n" << bytes << std::endl;
  std::abort();
}

bool open(const std::string& bytes) {
  return Layout::open_bytes("fuzzed.zblt", bytes);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  Gio::init();
  Layout::get().new_document(false);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const auto* const before = &Layout::get();
  if (!open(bytes)) {
    if (&Layout::get() != before) report("a failed load has replaced the document", bytes);
    return 0;
  }
  const auto written = Layout::get().serialize();
  if (!open(written)) report("what was written does not open", written);
  if (Layout::get().serialize() != written) report("it is not written the same again", written);
  Layout::get().new_document(false);
  return 0;
}

// Opens any bytes as a layout. What opens must be written to bytes that open again and are written
// the same.

#include <yaml-cpp/yaml.h>

#include <iostream>

#include "core/layout.h"
#include "core/status.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

void require_for(const std::string& bytes, bool condition, const char* what) {
  if (!condition) std::cerr << get_status() << "\n" << bytes << std::endl;
  require(condition, what);
}

bool open(const std::string& bytes) {
  return Layout::open_bytes("fuzzed.zblt", bytes);
}

}  // namespace

void try_input(std::string_view input) {
  const std::string bytes(input);
  const auto* const before = &Layout::get();
  if (!open(bytes)) {
    return require_for(bytes, &Layout::get() == before, "a failed load leaves the document\n");
  }
  const auto written = Layout::get().serialize();
  require_for(written, open(written), "what was written opens\n");
  require_for(written, Layout::get().serialize() == written, "and is written the same again\n");
  Layout::get().new_document(false);
}

}  // namespace zemblar

#include "simulator/stations/line_splitter.h"

namespace zemblar::simulator {

std::vector<std::string> LineSplitter::feed(std::string_view bytes) {
  std::vector<std::string> lines;
  while (!overflowed_ && !bytes.empty()) {
    const auto end = bytes.find('\n');
    rest_ += bytes.substr(0, end);
    overflowed_ = rest_.size() > limit_;
    if (overflowed_ || end == std::string_view::npos) break;
    if (rest_.ends_with('\r')) rest_.pop_back();
    lines.push_back(std::move(rest_));
    rest_.clear();
    bytes.remove_prefix(end + 1);
  }
  if (overflowed_) rest_.clear();
  return lines;
}

}  // namespace zemblar::simulator

// Feeds bytes to the reader of a LI-USB's answers, in one piece and in many.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "devices/liusb/liusb_codec.h"

namespace zemblar::liusb {
namespace {

void require(bool condition, const char* what) {
  if (condition) return;
  std::fputs(what, stderr);
  std::abort();
}

std::vector<Bytes> answers_in(std::span<const std::uint8_t> stream, std::size_t step) {
  AnswerReader reader;
  std::vector<Bytes> answers;
  while (!stream.empty()) {
    const auto piece = stream.first(std::min(step, stream.size()));
    reader.add(piece);
    stream = stream.subspan(piece.size());
    while (auto answer = reader.next()) answers.push_back(*std::move(answer));
  }
  return answers;
}

}  // namespace
}  // namespace zemblar::liusb

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zemblar::liusb;
  if (size == 0) return 0;
  // The first byte says how the rest is cut.
  const std::span stream(data + 1, size - 1);
  const auto answers = answers_in(stream, stream.size() + 1);
  require(answers == answers_in(stream, data[0] % 8 + 1u), "cuts make no difference\n");
  for (const auto& answer : answers) {
    const auto framed = frame(answer);
    const auto place = std::search(stream.begin(), stream.end(), framed.begin(), framed.end());
    require(place != stream.end(), "an answer is one that came\n");
    const auto status = read_status(answer);
    require(!(status && is_done(answer)), "a message says one thing\n");
  }
  return 0;
}

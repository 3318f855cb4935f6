// Feeds bytes to the reader of a LI-USB's answers, in one piece and in many.

#include "devices/liusb/liusb_codec.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

using namespace liusb;

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

void try_input(std::string_view input) {
  if (input.empty()) return;
  // The first byte says how the rest is cut.
  const std::span stream(reinterpret_cast<const std::uint8_t*>(input.data()) + 1, input.size() - 1);
  const auto answers = answers_in(stream, stream.size() + 1);
  require(answers == answers_in(stream, byte_at(input, 0) % 8 + 1), "cuts make no difference\n");
  for (const auto& answer : answers) {
    const auto framed = frame(answer);
    const auto place = std::search(stream.begin(), stream.end(), framed.begin(), framed.end());
    require(place != stream.end(), "an answer is one that came\n");
    require(!(read_status(answer) && is_done(answer)), "a message says one thing\n");
  }
}

}  // namespace zemblar

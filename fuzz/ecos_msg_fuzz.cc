// Feeds bytes to the reader of an ECoS station's messages, whole and in pieces.

#include "devices/ecos/ecos_msg.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

/// A text of everything that a message says.
std::string describe(const ECoSMsg& message) {
  auto text = message.get_type() == ECoSMsg::reply ? "reply " + message.get_command() : "event";
  text += '|' + std::string(1, static_cast<char>(message.get_status() % 251));
  for (const auto& [id, values] : message.get_objects()) {
    require(&message.get_object(id) == &values, "an object in the body is found by its id\n");
    text += '|';
    for (const auto& [key, value] : values) text += key + '=' + value + ',';
  }
  return text;
}

void parse_once(const std::string& bytes) {
  auto n = bytes.size();
  try {
    const ECoSMsg message(bytes.data(), n);
    require(n > 0 && n <= bytes.size(), "a message takes bytes, and no more than there are\n");
    // What it took is all that it needs, and one byte less is not enough.
    auto again = n;
    require(describe(ECoSMsg(bytes.data(), again)) == describe(message), "the same again\n");
    auto less = n - 1;
    const ECoSMsg shorter(bytes.data(), less);
    require(false, "a message without its last line feed is no whole one\n");
  } catch (const ECoSMsg::ErrorPartial&) {
  } catch (const ECoSMsg::ErrorBroken&) {
    require(n == bytes.size(), "a broken message takes nothing\n");
  }
}

/// What comes out of the framing when the stream arrives `step` bytes at a time.
std::string read_stream(std::string_view stream, std::size_t step) {
  ECoSFraming framing;
  std::string text;
  while (!stream.empty() && framing.room() > 0) {
    const auto piece = stream.substr(0, std::min(step, framing.room()));
    piece.copy(framing.tail(), piece.size());
    framing.add(piece.size());
    stream.remove_prefix(piece.size());
    while (const auto message = framing.next()) text += describe(*message) + '\n';
  }
  return text;
}

}  // namespace

void try_input(std::string_view input) {
  if (input.empty()) return;
  // The first byte says how the rest is cut.
  const std::string bytes(input.substr(1));
  parse_once(bytes);
  const auto pieces = read_stream(bytes, byte_at(input, 0) % 64 + 1);
  // Longer streams may fill the buffer sooner or later, as they are cut.
  if (bytes.size() <= ECoSFraming::capacity) {
    require(pieces == read_stream(bytes, ECoSFraming::capacity), "cuts make no difference\n");
  }
}

}  // namespace zemblar

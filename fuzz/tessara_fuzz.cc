// Feeds bytes to whoever reads what Tessara devices answer: info blocks, and what a master says
// while a message is relayed through it.

#include <optional>
#include <stdexcept>

#include "devices/tessara/tessara_codec.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

using namespace tessara;

constexpr std::size_t table_begin = 4;

// --- Info blocks ---

void check_table(const SpeedTable& table, std::string_view info) {
  require(table.end > table_begin && table.end <= info.size(), "a table ends in its block\n");
  const auto words = (table.end - table_begin) / 2;
  require(words * 2 == table.end - table_begin, "a table has whole words\n");
  require(table.speeds.size() == words + 14, "each word but the first adds one speed\n");
  for (std::size_t word = 0; word < words; ++word) {
    const bool more = (byte_at(info, table_begin + 2 * word) & 0x80) != 0;
    require(more == (word + 1 < words), "the table ends with the word that says so\n");
    const bool first = (byte_at(info, table_begin + 2 * word + 1) & 1) != 0;
    require(table.has(word) == first, "nothing comes after the first bit of a word\n");
  }
}

void read_any_table(std::string_view info) {
  try {
    check_table(read_speed_table(info), info);
  } catch (const std::runtime_error&) {
    // It ends too early.
  }
}

template <typename Read>
auto read_or_none(Read read, std::string_view info) -> decltype(read(info)) {
  try {
    return read(info);
  } catch (const std::runtime_error&) {
    return {};
  }
}

/// `extra` bytes after the table are the least that a block of that model has.
template <typename Read>
void check_block(Read read, std::string_view model, std::size_t extra, std::string_view info) {
  const auto block = read_or_none(read, info);
  if (!block) return;
  require(info.starts_with(model), "a block is of the model that it says\n");
  check_table(block->table, info);
  const auto size = block->table.end + extra;
  require(size <= info.size() && info[block->table.end] == 1, "of a format that is known\n");
  require(read_or_none(read, info.substr(0, size)).has_value(),
          "what comes after does not count\n");
  require(!read_or_none(read, info.substr(0, size - 1)), "no shorter one will do\n");
}

void read_block(std::string_view info) {
  read_any_table(info);
  check_block(read_bus_info, bus_model, 3, info);
  check_block(read_reader_info, reader_model, 4, info);
  const auto reader = read_or_none(read_reader_info, info);
  require(!reader || reader->input_count > 0, "a reader has an input\n");
}

// --- Relaying ---

/// A master that has taken all that it said it has.
class Master {
 public:
  Master(Relay& relay, std::string whole) : relay_(relay), whole_(std::move(whole)) {}

  void take(std::size_t count) {
    const auto frame = relay_.frame();
    check(frame);
    const auto offered = frame.size() - 1;
    require(relay_.accept(count) == (count <= offered), "not more than was offered\n");
    if (count <= offered) taken_ += frame.substr(1, count);
    require(whole_.starts_with(taken_), "the message comes as it is\n");
    require(relay_.done() == (taken_ == whole_), "and is done when all of it has come\n");
  }

 private:
  void check(const std::string& frame) const {
    require(frame.size() >= 2 && frame.size() <= 256, "a frame is no longer than the line's\n");
    const bool more = frame.size() == 256;
    const auto command = taken_.empty() ? (more ? 0x0a : 0x0b) : (more ? 0x08 : 0x09);
    require(frame[0] == command, "a frame says where in the message it stands\n");
    require(more || whole_.size() - taken_.size() == frame.size() - 1,
            "the last one has the rest\n");
  }

  Relay& relay_;
  std::string whole_;
  std::string taken_{};
};

/// Two bytes say how long the message is; then come the master's replies, two bytes each.
void relay(std::string_view data) {
  if (data.size() < 3) return;
  const auto length = accepted_count(data.substr(1, 2)).value() % 1500;
  std::string message;
  for (std::size_t i = 0; i < length; ++i) message += static_cast<char>(i * 7 + i / 256);
  Relay relay(static_cast<std::uint8_t>(data[0]), message);
  Master master(relay, data[0] + message);
  for (data.remove_prefix(3); !relay.done() && !data.empty();) {
    const auto reply = data.substr(0, 2);
    data.remove_prefix(reply.size());
    const auto count = accepted_count(reply);
    require(count.has_value() == (reply.size() == 2), "a count has two bytes\n");
    if (count) master.take(*count);
  }
  while (!relay.done()) master.take(relay.frame().size() - 1);
}

void fetch_from(std::string_view reply) {
  const auto fetched = read_fetched(reply);
  const auto status = reply.empty() ? -1 : static_cast<int>(byte_at(reply, 0));
  require((fetched.status == Fetched::Status::complete) == (status == 0), "0 is complete\n");
  require((fetched.status == Fetched::Status::more) == (status == 1), "1 is more\n");
  require(reply.empty() || fetched.data == reply.substr(1), "all the rest is data\n");
}

}  // namespace

void try_input(std::string_view input) {
  read_block(input);
  read_block(std::string(bus_model).append(input));
  read_block(std::string(reader_model).append(input));
  relay(input);
  fetch_from(input);
}

}  // namespace zemblar

#include "devices/tessara/tessara_codec.h"

#include <algorithm>
#include <stdexcept>

namespace zemblar::tessara {
namespace {

/// Frames carry the command and at most this many bytes.
constexpr std::size_t frame_data = 255;

constexpr std::size_t table_offset = 4;
constexpr std::size_t bits_per_word = 15;
constexpr std::uint8_t format_version = 1;

std::uint8_t byte_at(std::string_view bytes, std::size_t index) {
  return static_cast<std::uint8_t>(bytes[index]);
}

template <typename... Bytes>
std::string message(Bytes... bytes) {
  return {static_cast<char>(bytes)...};
}

/// The block's speed table when it begins with that model's name and is long enough for `extra`
/// bytes after the table, of which the first is the format's version.
std::optional<SpeedTable> read_table_of(std::string_view info, std::string_view model,
                                        std::size_t extra) {
  constexpr std::size_t shortest = 6;
  if (!info.starts_with(model) || info.size() < shortest) return {};
  auto table = read_speed_table(info);
  if (info.size() < table.end + extra || byte_at(info, table.end) != format_version) return {};
  return table;
}

}  // namespace

// --- Messages ---

std::string ask_info() {
  return message(0x00);
}

std::string ask_serial() {
  return message(0x02);
}

std::string use_speed(std::uint8_t index) {
  return message(0x04, index);
}

std::string ask_speed_of(std::uint8_t address) {
  return message(0x06, address);
}

std::string set_speed_of(std::uint8_t address, std::uint8_t index) {
  return message(0x07, address, index);
}

std::string fetch() {
  return message(0x0c);
}

std::string use_encoding(std::uint8_t encoding) {
  return message(0x06, encoding);
}

std::string enable_inputs(const std::vector<bool>& inputs) {
  auto bytes = message(0x08);
  bytes.resize(1 + (inputs.size() + 7) / 8);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i]) bytes[1 + i / 8] = static_cast<char>(bytes[1 + i / 8] | 1 << i % 8);
  }
  return bytes;
}

std::string reset_stream() {
  return message(0x09);
}

std::string poll() {
  return message(0x0a);
}

// --- Relaying ---

Relay::Relay(std::uint8_t address, std::string_view message)
    : rest_(1, static_cast<char>(address)) {
  rest_ += message;
}

// The command byte tells the master whether more of the message follows the frame. A full first
// frame always counts as followed by more.
std::string Relay::frame() const {
  const bool all = rest_.size() < frame_data;
  const auto command = begun_ ? (all ? 0x09 : 0x08) : (all ? 0x0b : 0x0a);
  return message(command) + rest_.substr(0, offered());
}

std::size_t Relay::offered() const {
  return std::min(rest_.size(), frame_data);
}

bool Relay::accept(std::size_t count) {
  if (count > offered()) return false;
  if (count > 0) begun_ = true;
  rest_.erase(0, count);
  return true;
}

std::optional<std::size_t> accepted_count(std::string_view reply) {
  if (reply.size() != 2) return {};
  return static_cast<std::size_t>(byte_at(reply, 0)) << 8 | byte_at(reply, 1);
}

Fetched read_fetched(std::string_view reply) {
  if (reply.empty()) return {Fetched::Status::failed, {}};
  const auto status = byte_at(reply, 0);
  return {status == 0   ? Fetched::Status::complete
          : status == 1 ? Fetched::Status::more
                        : Fetched::Status::failed,
          reply.substr(1)};
}

// --- Info blocks ---

SpeedTable read_speed_table(std::string_view info) {
  SpeedTable table{{}, table_offset};
  bool more = true;
  for (std::size_t first = 0; more; ++first) {
    if (info.size() < table.end + 2) throw std::runtime_error("Broken Speed Table");
    const auto word = byte_at(info, table.end) << 8 | byte_at(info, table.end + 1);
    table.end += 2;
    table.speeds.resize(first + bits_per_word);
    for (std::size_t bit = 0; bit < bits_per_word; ++bit) {
      table.speeds[first + bit] = (word >> bit & 1) != 0;
    }
    more = (word & 0x8000) != 0;
  }
  return table;
}

std::optional<BusInfo> read_bus_info(std::string_view info) {
  auto table = read_table_of(info, bus_model, 3);
  if (!table) return {};
  const auto end = table->end;
  return BusInfo{*std::move(table), byte_at(info, end + 1) != 0, byte_at(info, end + 2)};
}

std::optional<ReaderInfo> read_reader_info(std::string_view info) {
  auto table = read_table_of(info, reader_model, 4);
  if (!table) return {};
  const auto end = table->end;
  const auto last_input = byte_at(info, end + 2);
  if (last_input == 255) return {};
  return ReaderInfo{*std::move(table), static_cast<std::uint8_t>(last_input + 1),
                    byte_at(info, end + 3)};
}

}  // namespace zemblar::tessara

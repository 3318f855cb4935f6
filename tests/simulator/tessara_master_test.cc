#include "simulator/bus/tessara_master.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "simulator/stations/hex.h"
#include "tests/simulator/tessara_host.h"

namespace zemblar::simulator {
namespace {

using test::from_hex;
using test::TessaraHost;

/// Says each message backwards, but for a change of speed.
class Mirror : public TessaraDevice {
 public:
  unsigned speed() const override { return speed_; }
  std::optional<std::string> execute(std::string_view message) override {
    heard = message;
    if (message[0] == '\xee') return {};
    if (message[0] == 4) {
      speed_ = static_cast<unsigned char>(message[1]);
      return "";
    }
    return std::string(message.rbegin(), message.rend());
  }
  void restart() override { speed_ = 0; }

  std::string heard;

 private:
  unsigned speed_ = 0;
};

class TessaraMasterTest : public testing::Test {
 protected:
  TessaraMasterTest() { master.attach(5, mirror); }

  std::string ask(const std::string& frame) {
    const auto reply = host.exchange(from_hex(frame));
    if (!reply.ended) return "no end";
    return hex(reply.bytes) + (reply.error ? "error" : "");
  }

  VirtualClock clock;
  SerialCable cable;
  TessaraMaster master{cable};
  Mirror mirror;
  TessaraHost host{clock, cable};
};

TEST_F(TessaraMasterTest, answers_what_a_host_asks) {
  master.options.serial_nr = "xy";
  master.options.speed_scan = 0;
  const struct {
    const char* frame;
    const char* answer;
  } cases[] = {
      {"00", "42 55 53 00 00 01 01 00 04"},
      {"02", "78 79"},
      {"04 00", ""},
      {"04 01", "error"},
      {"06 07", "00"},
      {"07 07 04", ""},
      {"06 07", "04"},
      {"07 07 05", "error"},
      {"06", "error"},
      {"0d", "error"},
      {"00", "42 55 53 00 00 01 01 00 04"},  // what went wrong before is over
      {"0c", "error"},
      {"09 00", "error"},
      {"0b 05 11 22", "00 03"},
      {"0c", "00 22 11"},
      {"0c", "error"},
      {"0b 05", "00 01"},
      {"0b 06 00", "00 02"},
      {"0c", "03"},  // nobody there
      {"0b 05 ee", "00 02"},
      {"0c", "02"},  // refused
  };
  for (const auto& [frame, answer] : cases) EXPECT_EQ(answer, ask(frame)) << frame;
  EXPECT_EQ("07 07 04", master.take_frames().at(5));
  EXPECT_EQ((std::vector<std::string>{"11 22", "", "ee"}), master.take_messages(5));
}

TEST_F(TessaraMasterTest, passes_messages_of_any_length_on_in_any_parts) {
  for (const std::size_t capacity : {1u, 2u, 100u, 255u, 256u}) {
    for (const std::size_t length : {1u, 2u, 253u, 254u, 255u, 509u, 600u}) {
      if (length / capacity > 300) continue;
      for (const std::size_t piece : {1u, 254u, 255u}) {
        if (length / piece > 300) continue;
        master.options.capacity = capacity;
        master.options.piece = piece;
        master.options.not_ready = static_cast<unsigned>(length % 3);
        std::string message;
        for (std::size_t i = 0; i < length; ++i) message += static_cast<char>(i * 7 + 16);
        const auto reply = host.relay(5, message);
        EXPECT_EQ(hex(message), hex(mirror.heard)) << capacity << ' ' << length << ' ' << piece;
        std::ranges::reverse(message);
        EXPECT_EQ(hex(message), hex(reply.bytes)) << capacity << ' ' << length << ' ' << piece;
        EXPECT_FALSE(reply.error);
      }
    }
  }
}

TEST_F(TessaraMasterTest, misbehaves_as_it_is_told) {
  using Faults = TessaraMaster::Faults;
  const struct {
    Faults faults;
    const char* frame;
    const char* answer;
  } cases[] = {
      {{.silent = true}, "00", ""},       {{.never_ready = true}, "0b 05 11", "00 00"},
      {{.never_done = true}, "0c", "01"}, {{.endless = true}, "06 05", "no end"},
      {{.errors = 1}, "06 05", "error"},  {{.lost_byte = 1}, "00", "42 53 00 00 01 01 01 04"},
      {{.cut_at = 4}, "00", "no end"},
  };
  for (const auto& [faults, frame, answer] : cases) {
    EXPECT_EQ("00 02", ask("0b 05 11"));
    master.faults = faults;
    EXPECT_EQ(answer, ask(frame));
    if (master.faults.errors == 0) master.faults = {};
    if (faults.cut_at == TessaraMaster::no_byte) {
      EXPECT_EQ("00", ask("06 05")) << "after " << answer;
    }
  }
  EXPECT_EQ("no end", ask("06 05")) << "the cable is out";
  TessaraHost again(clock, cable);
  EXPECT_EQ("TB-0001", again.exchange("\x02").bytes);
}

}  // namespace
}  // namespace zemblar::simulator

// What it costs to listen to RailCom readers: to take a poll answer apart, and to keep a whole bus
// of readers polled.

#include <glib.h>

#include <array>
#include <ctime>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/ratio.h"
#include "core/layout.h"
#include "core/toplevel.h"
#include "devices/default_device.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "devices/tessara/railcom_poll.h"
#include "devices/tessara/serial_port_tessara.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"
#include "simulator/bus/serial_cable.h"

namespace zemblar::bench {
namespace {

constexpr unsigned input_count = 16;
constexpr unsigned reader_count = 16;
constexpr unsigned records_per_answer = 128;  // of about a second on the track
constexpr unsigned speaking_inputs = 4;

char byte(unsigned value) {
  return static_cast<char>(value);
}

/// Four of the inputs hear a locomotive each, which says the two halves of its address in turn, so
/// that an answer is new at first and then one of the last. With states, those of all inputs come
/// in the first record.
std::string poll_answer(bool with_states) {
  std::string answer;
  for (unsigned i = 0; i < records_per_answer; ++i) {
    const bool fresh = i < 2;
    const bool states = i == 0 && with_states;
    answer += byte(2 | (states ? 0x40 : 0));
    answer += "\x03\x3f\x3c";
    if (states) answer += "\xaa" + std::string(input_count / 4 - 1, '\0');
    answer += byte(fresh ? 0 : 0b10101010);
    if (!fresh) continue;
    answer += "\x22\x22";
    for (unsigned input = 0; input < speaking_inputs; ++input) {
      answer += i % 2 == 0 ? "\xa3\xac" : "\x99\xa5";
    }
  }
  return answer;
}

// --- One answer ---

struct Sink : RailComPollSink {
  unsigned input_count() const override { return bench::input_count; }
  std::uint8_t state(unsigned input) const override { return states[input]; }
  bool set_state(unsigned input, std::uint8_t state) override {
    states[input] = state;
    return true;
  }
  bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) override {
    sum += input + dcc.size() + bytes.size();
    return true;
  }
  bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) override {
    sum += input + dcc.size() + repeat;
    return true;
  }

  std::array<std::uint8_t, bench::input_count> states{};
  std::size_t sum = 0;
};

/// The same fields off the same bits, with no check, no copy and nobody to tell.
class BarePass {
 public:
  std::size_t run(const std::string& answer) {
    at_ = reinterpret_cast<const std::uint8_t*>(answer.data());
    const auto* end = at_ + answer.size();
    while (at_ < end) read_record();
    return sum_;
  }

 private:
  void read_record() {
    const unsigned head = *at_++;
    at_ += (head & 0x3f) + 1;
    if (head & 0x40) {
      for (unsigned i = 0; i < input_count; ++i) states_[i] = at_[i / 4] >> i % 4 * 2 & 3;
      at_ += input_count / 4;
    }
    unsigned fresh = 0;
    unsigned place = 0;
    for (const auto state : states_) {
      if (state < 2) continue;
      const unsigned repeat = at_[place / 4] >> place % 4 * 2 & 3;
      sum_ += repeat;
      fresh += repeat == 0;
      ++place;
    }
    at_ += (place + 3) / 4;
    const auto* lengths = at_;
    at_ += (fresh + 1) / 2;
    for (unsigned i = 0; i < fresh; ++i) at_ += lengths[i / 2] >> i % 2 * 4 & 15;
  }

  const std::uint8_t* at_ = nullptr;
  std::array<std::uint8_t, input_count> states_{};
  std::size_t sum_ = 0;
};

const Figure parsing("reader: 128 records of 16 inputs, to a bare pass over the bits", "ns", 6.5,
                     [](Effort effort) {
                       const auto answer = poll_answer(true);
                       const auto count = effort.count(4000);
                       return [answer, count] {
                         Sink sink;
                         BarePass pass;
                         return versus(
                             count,
                             [&] {
                               read_poll_answer(answer, sink);
                               keep(sink.sum);
                             },
                             [&] { keep(pass.run(answer)); });
                       };
                     });

// --- A bus ---

/// The least that can be at the other end of the cable: a master with its readers, which answers at
/// once. Nothing here waits, so that all time that passes is the program's own.
class InstantMaster {
 public:
  InstantMaster() {
    cable.on_bytes([this](std::string_view bytes) { frame_ += bytes; });
    cable.on_dtr([this](bool on) {
      if (!on && !frame_.empty()) cable.send(answer_to(std::exchange(frame_, {})));
    });
  }

  [[nodiscard]] std::size_t polled_count() const { return polled_.size(); }

  simulator::SerialCable cable;
  std::size_t exchanges = 0;
  std::size_t polls = 0;

 private:
  std::string answer_to(const std::string& frame) {
    ++exchanges;
    switch (frame[0]) {
      case 0x00:
        return {"BUS\0\x00\x1f\x01\x01\x04", 9};
      case 0x02:
        return "master";
      case 0x06:
        return "\x01";
      case 0x0b:
        answer_ = answer_of_reader(frame[1], frame[2]);
        return {'\0', byte(static_cast<unsigned>(frame.size() - 1))};
      case 0x0c:
        return next_piece();
      default:
        return {};
    }
  }
  std::string answer_of_reader(char address, char command) {
    switch (command) {
      case 0x00:
        return {"QVRN\x00\x1f\x01\x00\x0f\x01", 10};
      case 0x02:
        return "reader";
      case 0x09:
        polled_.erase(address);
        return {};
      case 0x0a:
        ++polls;
        return polled_.insert(address).second ? first_ : next_;
      default:
        return {};
    }
  }
  std::string next_piece() {
    const auto piece = answer_.substr(0, 255);
    answer_.erase(0, piece.size());
    return byte(answer_.empty() ? 0 : 1) + piece;
  }

  const std::string first_ = poll_answer(true);
  const std::string next_ = poll_answer(false);
  std::set<char> polled_;  // readers of which all states have been told
  std::string frame_;
  std::string answer_;
};

/// Times the main loop has slept, by what it asks the system to wait with.
class Sleeps {
 public:
  Sleeps() : before_(g_main_context_get_poll_func(nullptr)) {
    count_ = 0;
    g_main_context_set_poll_func(nullptr, [](GPollFD* fds, guint fd_count, gint timeout) {
      if (timeout != 0) ++count_;
      return g_poll(fds, fd_count, timeout);
    });
  }
  ~Sleeps() { g_main_context_set_poll_func(nullptr, before_); }
  Sleeps(const Sleeps&) = delete;
  Sleeps& operator=(const Sleeps&) = delete;

  [[nodiscard]] static std::size_t count() { return count_; }

 private:
  static inline std::size_t count_ = 0;
  GPollFunc before_;
};

/// A bus of 16 readers, all of them in service, in real time.
class Bus {
 public:
  using Seconds = std::chrono::duration<double>;

  Bus() {
    auto& layout = Layout::get(new Layout);
    layout.new_document(false);
    layout.get_default_device().add_lok(Address(9), layout.get_loks().add(new Lok));
    bus_ = layout.get_devices().add(new DeviceTessaraBus);
    fiber::spawn([this] { bring_into_service(); });
    for (const auto limit = now() + Seconds(60); !all_polled();) {
      g_main_context_iteration(nullptr, TRUE);
      if (now() > limit) throw std::runtime_error("the benchmark's bus does not come up");
    }
  }
  ~Bus() {
    Layout::get().destroy();
    while (g_main_context_iteration(nullptr, FALSE)) continue;
  }

  /// What has happened in a time that has passed.
  struct Passed {
    double seconds;
    double cpu_seconds;
    double exchanges;
    double polls;
    double sleeps;
  };
  Passed run(Seconds time) {
    const Sleeps sleeps;
    const auto begin = state();
    while (now() - start_ < Seconds(begin.seconds) + time) {
      g_main_context_iteration(nullptr, TRUE);
    }
    const auto end = state();
    return {end.seconds - begin.seconds, end.cpu_seconds - begin.cpu_seconds,
            end.exchanges - begin.exchanges, end.polls - begin.polls, end.sleeps - begin.sleeps};
  }

 private:
  static std::chrono::steady_clock::time_point now() { return std::chrono::steady_clock::now(); }

  // All readers at once, or those that are polled already would hold up the next one.
  void bring_into_service() {
    bus_->come_up_on(port_.operator->());
    for (unsigned address = 1; address <= reader_count; ++address) {
      const auto place = static_cast<std::uint8_t>(address);
      auto* reader = bus_->add(new DeviceTessaraRailComReader(bus_, place));
      fiber::spawn([reader] { reader->come_up_on_bus(); });
    }
  }

  [[nodiscard]] bool all_polled() const { return master_.polled_count() == reader_count; }

  [[nodiscard]] Passed state() const {
    timespec cpu{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
    return {Seconds(now() - start_).count(),
            static_cast<double>(cpu.tv_sec) + static_cast<double>(cpu.tv_nsec) * 1e-9,
            static_cast<double>(master_.exchanges), static_cast<double>(master_.polls),
            static_cast<double>(Sleeps::count())};
  }

  InstantMaster master_;
  Glib::RefPtr<SerialPortTessara> port_ =
      SerialPortTessara::create({.port_name = "memory"}, master_.cable.plug());
  DeviceTessaraBus* bus_ = nullptr;
  std::chrono::steady_clock::time_point start_ = now();
};

/// One bus for a whole figure, made when the first round is due.
template <typename Judge>
Round on_bus(Effort effort, const Judge& judge) {
  const Bus::Seconds time(effort.quick ? 0.1 : 0.5);
  return [bus = std::shared_ptr<Bus>(), time, judge]() mutable {
    if (!bus) bus = std::make_shared<Bus>();
    return judge(bus->run(time));
  };
}

// The processor's time for one poll of each reader, to the time that passes meanwhile: how much of
// a processor it takes. On real hardware more time passes, because its answers take some.
const Figure share(
    "reader: one poll of 16 readers, share of a processor", "us", 0.03, [](Effort effort) {
      return on_bus(effort, [](const Bus::Passed& passed) {
        const auto rounds = passed.polls / reader_count;
        return Sample{passed.cpu_seconds * 1e6 / rounds, passed.seconds * 1e6 / rounds};
      });
    });

// The loop should sleep no more often than there is a reason to wake up. The reasons are counted by
// what arrives at the other end: each exchange has a pause until its bytes are out and two reads
// that end in silence, each poll has the pause before it. The bus looks once a second for lost
// devices, and the layout has a pulse twice a second. Those that fall together count as many.
const Figure wake_ups(
    "reader: wake-ups with 16 readers, to what its timers need", "/s", 1.1, [](Effort effort) {
      return on_bus(effort, [](const Bus::Passed& passed) {
        const auto timers = passed.exchanges * 3 + passed.polls;
        return Sample{passed.sleeps / passed.seconds, timers / passed.seconds + 1 + 2};
      });
    });

}  // namespace
}  // namespace zemblar::bench

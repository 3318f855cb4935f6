// Feeds bytes to the reader of a RailCom reader's poll answers, and what comes out of it to inputs,
// next to a second reading of the same bytes by the letter of the format.

#include <memory>
#include <set>
#include <vector>

#include "core/layout.h"
#include "core/toplevel.h"
#include "devices/default_device.h"
#include "devices/tessara/bitstream_reader.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "devices/tessara/railcom_poll.h"
#include "fuzz/fuzz.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

using Input = DeviceTessaraRailComReaderInput;
using States = std::vector<std::uint8_t>;

struct Event {
  enum class What { state, packet, repeat } what;
  unsigned input;
  unsigned number;  // the state, or the place in the history
  std::string dcc{};
  std::string bytes{};
  bool operator==(const Event&) const = default;
};
using Events = std::vector<Event>;

/// The format once more, over the bits as they come.
class Expected {
 public:
  Expected(std::string_view answer, States states) : stream_(answer), states_(std::move(states)) {
    try {
      while (!stream_.eos()) read_record();
    } catch (const BitstreamReader::EOS&) {
      is_short = true;
    }
  }

  Events events;
  bool is_short = false;

 private:
  std::string bytes(std::size_t count) { return count == 0 ? "" : stream_.read_bytes(count); }

  void read_record() {
    const auto head = stream_.read_byte();
    if (head >= 0x80) return;
    const auto dcc = bytes(head % 64 + 1);
    if (head & 0x40) {
      for (unsigned i = 0; i < states_.size(); ++i) {
        states_[i] = static_cast<std::uint8_t>(stream_.read_bits(2));
        events.push_back({Event::What::state, i, states_[i]});
      }
      stream_.align();
    }
    read_answers(dcc);
  }
  void read_answers(const std::string& dcc) {
    Events answers;
    for (unsigned i = 0; i < states_.size(); ++i) {
      if (states_[i] < 2) continue;
      answers.push_back({Event::What::repeat, i, stream_.read_bits(2), dcc});
    }
    stream_.align();
    std::vector<unsigned> lengths;
    for (const auto& each : answers) lengths.push_back(each.number ? 0 : stream_.read_bits(4));
    stream_.align();
    for (std::size_t i = 0; i < answers.size(); ++i) {
      auto& answer = answers[i];
      if (answer.number == 0) answer.what = Event::What::packet;
      answer.bytes = bytes(lengths[i]);
      events.push_back(answer);
    }
  }

  BitstreamReader stream_;
  States states_;
};

/// What comes out of the program's reading, until it has had enough.
class Listener : public RailComPollSink {
 public:
  Listener(States states, std::size_t enough) : states_(std::move(states)), enough_(enough) {}

  unsigned input_count() const override { return static_cast<unsigned>(states_.size()); }
  std::uint8_t state(unsigned input) const override { return states_.at(input); }
  bool set_state(unsigned input, std::uint8_t state) override {
    states_.at(input) = state;
    return note({Event::What::state, input, state});
  }
  bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) override {
    return note({Event::What::packet, input, 0, dcc, bytes});
  }
  bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) override {
    return note({Event::What::repeat, input, repeat, dcc});
  }

  /// False when the answer ends too early.
  bool hear(std::string_view answer) {
    try {
      read_poll_answer(answer, *this);
      return true;
    } catch (const BitstreamReader::EOS&) {
      return false;
    }
  }

  Events events;

 private:
  bool note(Event event) {
    events.push_back(std::move(event));
    return events.size() < enough_;
  }

  States states_;
  std::size_t enough_;
};

constexpr std::size_t never = static_cast<std::size_t>(-1);

void check_reading(std::string_view answer, const States& states, unsigned choice) {
  const Expected expected(answer, states);
  Listener whole(states, never);
  require(whole.hear(answer) != expected.is_short, "it is known where an answer ends\n");
  require(whole.events == expected.events, "the same as by the letter\n");

  const std::size_t enough = 1 + choice % (whole.events.size() + 1);
  Listener fed_up(states, enough);
  fed_up.hear(answer);
  require(fed_up.events.size() == std::min(enough, whole.events.size()), "enough is enough\n");
  require(begins_with(whole.events, fed_up.events), "and the same until then\n");

  Listener cut_off(states, never);
  cut_off.hear(answer.substr(0, choice % (answer.size() + 1)));
  require(begins_with(whole.events, cut_off.events), "what is cut off changes nothing before it\n");
}

// --- Inputs ---

constexpr unsigned addresses = 127;

/// An input, and what it should have heard: its last answers as a list without gaps.
class Place {
 public:
  explicit Place(Object& parent) : input_(parent.add(new Input)) {
    input_->signal_arrived().connect([this](Lok* lok) { present_.insert(lok); });
    input_->signal_left().connect(
        [this](Lok* lok) { require(present_.erase(lok) == 1, "who leaves was there\n"); });
    decoder_.signal_seen().connect([this](const Address& address) {
      auto* lok = Layout::get().get_default_device().find_lok(address);
      if (lok) seen_.insert(lok);
    });
  }
  ~Place() {
    if (input_) input_->destroy();
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  void end_at_next_notice() {
    input_->signal_changed().connect([this] {
      if (auto* input = std::exchange(input_, nullptr)) input->destroy();
    });
  }

  void take(const Event& event) {
    if (!input_) return;
    if (event.what == Event::What::state) return input_->set_state(event.number);
    const auto bytes = event.what == Event::What::packet ? remember(event.bytes) : recall(event);
    if (!bytes.empty()) decoder_.decode(event.dcc, bytes);
    if (event.what == Event::What::packet) {
      input_->on_packet(event.dcc, event.bytes);
    } else {
      input_->on_repeat(event.dcc, event.number);
    }
    check();
  }
  void forget() {
    if (!input_) return;
    input_->set_state(0);
    if (input_) input_->tick(1001);
    if (!input_) return;
    require(present_.empty() && !input_->occupied(), "who is silent for long is gone\n");
  }

 private:
  std::string remember(const std::string& bytes) {
    last_.insert(last_.begin(), bytes);
    last_.resize(3);
    return bytes;
  }
  std::string recall(const Event& event) {
    const auto bytes = last_.at(event.number - 1);
    last_.erase(last_.begin() + event.number - 1);
    last_.insert(last_.begin(), bytes);
    return bytes;
  }
  void check() const {
    if (!input_) return;
    const auto detected = input_->detected();
    require(std::set<Lok*>(detected.begin(), detected.end()) == seen_, "who answers is detected\n");
    require(seen_ == present_ && seen_.size() == detected.size(), "and has been told once\n");
    require(input_->occupied() || detected.empty(), "where somebody is it is occupied\n");
  }

  Input* input_;
  std::vector<std::string> last_ = std::vector<std::string>(3);
  RailComDecoder decoder_;
  std::set<Lok*> seen_{};
  std::set<Lok*> present_{};
};

void feed_inputs(const Events& events, std::size_t count, unsigned choice) {
  auto* reader = new DeviceTessaraRailComReader;
  Layout::get().get_devices().add(reader);
  std::vector<std::unique_ptr<Place>> places;
  for (std::size_t i = 0; i < count; ++i) places.push_back(std::make_unique<Place>(*reader));
  const auto end_at = choice % 4 == 0 ? choice / 4 % (events.size() + 1) : never;
  for (std::size_t i = 0; i < events.size(); ++i) {
    auto& place = *places.at(events[i].input);
    if (i == end_at) place.end_at_next_notice();
    place.take(events[i]);
  }
  for (const auto& place : places) place->forget();
  places.clear();
  reader->destroy();
}

bool add_locomotives() {
  for (unsigned address = 1; address <= addresses; address += 2) {
    auto* lok = Layout::get().get_loks().add(new Lok);
    lok->get_decoders().front()->set_address(Address(address));
  }
  return true;
}

}  // namespace

// A byte that chooses, one that says how many inputs there are, and their states before; then comes
// the answer.
void try_input(std::string_view input) {
  [[maybe_unused]] static const bool are_there = add_locomotives();
  if (input.size() < 2) return;
  const auto choice = byte_at(input, 0);
  const std::size_t count = 1 + byte_at(input, 1) % 17;
  if (input.size() < 2 + count) return;
  States states;
  for (std::size_t i = 0; i < count; ++i) states.push_back(input[2 + i] & 3);
  const auto answer = input.substr(2 + count);
  check_reading(answer, states, choice);
  feed_inputs(Expected(answer, states).events, count, choice);
}

}  // namespace zemblar

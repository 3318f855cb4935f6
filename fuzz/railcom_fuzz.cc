// Feeds DCC packets and what was heard after them to the RailCom decoder, several in a row.

#include <memory>
#include <vector>

#include "devices/railcom/railcom_decoder.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

struct Answer {
  std::string dcc;
  std::string bytes;
};

/// Each begins with a byte that says how long the two are.
std::vector<Answer> cut(std::string_view data) {
  std::vector<Answer> answers;
  while (data.size() > 2) {
    const auto head = byte_at(data, 0);
    data.remove_prefix(1);
    const auto take = [&data](std::size_t count) {
      const std::string taken(data.substr(0, count));
      data.remove_prefix(taken.size());
      return taken;
    };
    Answer answer;
    answer.dcc = take(head % 4 + 1);
    answer.bytes = take(head / 4 + 1);
    if (answer.bytes.empty()) break;
    answers.push_back(answer);
  }
  return answers;
}

struct Event {
  Address address;
  int what;  // the identifier and half of it, or the payload; -1 for having been seen
  bool operator==(const Event&) const = default;
};
using Events = std::vector<Event>;

class Detector {
 public:
  /// The decoder is destroyed in the handler of event number `end_after`, if there is one.
  explicit Detector(std::size_t end_after = 0) : end_after_(end_after) {
    auto& d = *decoder_;
    d.signal_seen().connect([this](const Address& address) { note(address, -1); });
    int place = 0;
    for (auto* signal :
         {&d.signal_id3_low(), &d.signal_id3_high(), &d.signal_id4(), &d.signal_id5(),
          &d.signal_id6(), &d.signal_id7_low(), &d.signal_id7_high(), &d.signal_id8()}) {
      const bool whole = place >= 2 && place <= 4;
      signal->connect([this, place, whole](const Address& address, std::uint8_t value) {
        require(whole || value < 128, "the bit that chose the signal is removed\n");
        require(!events.empty() && events.back() == Event{address, -1},
                "who says something has been seen\n");
        note(address, place * 256 + value);
      });
      ++place;
    }
  }
  void hear(const Answer& answer) {
    if (decoder_) decoder_->decode(answer.dcc, answer.bytes);
  }

  Events events;

 private:
  void note(const Address& address, int what) {
    require(Address::is_mobile_number(address.get_addr()), "a locomotive may have the address\n");
    events.push_back({address, what});
    if (events.size() == end_after_) decoder_.reset();
  }

  std::size_t end_after_;
  std::unique_ptr<RailComDecoder> decoder_ = std::make_unique<RailComDecoder>();
};

Events hear(const std::vector<Answer>& answers, std::size_t end_after = 0) {
  Detector detector(end_after);
  for (const auto& answer : answers) detector.hear(answer);
  return detector.events;
}

}  // namespace

void try_input(std::string_view input) {
  auto answers = cut(input);
  if (answers.empty()) return;
  const auto whole = hear(answers);
  const std::size_t end_after = 1 + byte_at(input, 0) % (whole.size() + 1);
  const auto ended = hear(answers, end_after);
  require(begins_with(whole, ended), "the same until the decoder ends\n");
  require(ended.size() == std::min(end_after, whole.size()), "and nothing after\n");

  auto& last = answers.back().bytes;
  last.resize(1 + byte_at(input, 1) % last.size());
  require(begins_with(whole, hear(answers)), "what is cut off changes nothing before it\n");
}

}  // namespace zemblar

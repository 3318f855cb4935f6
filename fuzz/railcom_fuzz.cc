// Feeds DCC packets and what was heard after them to the RailCom decoder, several in a row.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "devices/railcom/railcom_decoder.h"
#include "fuzz/require.h"

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
    const auto head = static_cast<std::uint8_t>(data[0]);
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

bool begins_with(const Events& whole, const Events& part) {
  return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

void hear_all(Detector& detector, const std::vector<Answer>& answers) {
  for (const auto& answer : answers) detector.hear(answer);
}

}  // namespace
}  // namespace zemblar

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zemblar;
  auto answers = cut({reinterpret_cast<const char*>(data), size});
  if (answers.empty()) return 0;
  Detector whole;
  hear_all(whole, answers);

  const std::size_t end_after = 1 + data[0] % (whole.events.size() + 1);
  Detector ended(end_after);
  hear_all(ended, answers);
  require(begins_with(whole.events, ended.events), "the same until the decoder ends\n");
  require(ended.events.size() == std::min(end_after, whole.events.size()), "and nothing after\n");

  auto& last = answers.back().bytes;
  last.resize(1 + data[1] % last.size());
  Detector shorter;
  hear_all(shorter, answers);
  require(begins_with(whole.events, shorter.events), "what is cut off changes nothing before it\n");
  return 0;
}

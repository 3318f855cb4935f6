// What it costs to make sense of RailCom answers.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/ratio.h"
#include "devices/railcom/railcom_decoder.h"

namespace zemblar::bench {
namespace {

/// What two locomotives answer in turn, each with the two symbols of channel 1, which are half an
/// address, and the six of channel 2; and a detector that hears it.
struct Track {
  Track() {
    for (const std::string half : {"\xa3\xac", "\x99\xa5"}) {  // identifiers 1 and 2
      answers.push_back(half + "\x8e\xac\x8d\xaa\x8b\xa9");    // identifier 3 thrice
    }
    for (std::size_t i = 0; i < symbols.size(); ++i) symbols[i] = static_cast<std::uint8_t>(i / 2);
  }
  void listen() {
    decoder.signal_seen().connect([this](const Address&) { ++seen; });
    signal.connect([this](const Address&) { ++seen; });
  }
  void decode() {
    for (const auto& answer : answers) decoder.decode(dcc, answer);
  }
  /// What decoding cannot do without: a symbol for each byte, and whether it is one.
  void look_up() {
    unsigned sum = 0;
    for (const auto& answer : answers) {
      for (const char byte : answer) {
        const auto symbol = symbols[static_cast<std::uint8_t>(byte)];
        if (symbol == 0xff) break;
        sum += symbol;
      }
    }
    keep(sum);
  }
  void tell() {
    for (std::size_t told = 0; told < 7; ++told) signal.emit(address);
  }

  const std::string dcc = "\x03\x3f";
  const Address address{3};
  std::vector<std::string> answers;
  std::array<std::uint8_t, 256> symbols{};
  RailComDecoder decoder;
  RailComDecoder::Seen signal;
  std::size_t seen = 0;
};

const Figure unheard("RailCom: 16 bytes that nobody listens to, to a table loop", "ns", 3.0,
                     [](Effort effort) {
                       auto track = std::make_shared<Track>();
                       const auto count = effort.count(200000);
                       return [track, count] {
                         return versus(
                             count, [&] { track->decode(); }, [&] { track->look_up(); });
                       };
                     });

const Figure heard("RailCom: 16 bytes that tell 7 times, to a loop that does", "ns", 1.5,
                   [](Effort effort) {
                     auto track = std::make_shared<Track>();
                     track->listen();
                     const auto count = effort.count(50000);
                     return [track, count] {
                       return versus(
                           count, [&] { track->decode(); },
                           [&] {
                             track->look_up();
                             track->tell();
                           });
                     };
                   });

}  // namespace
}  // namespace zemblar::bench

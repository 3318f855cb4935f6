#include "simulator/stations/station_console.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace zemblar::simulator {
namespace {

constexpr auto blanks = " \t";

// The words after a command's name, taken from the left.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) { trim(); }

  bool empty() const { return text_.empty(); }

  std::string_view word() {
    const auto word = text_.substr(0, text_.find_first_of(blanks));
    if (word.empty()) throw std::invalid_argument("something is missing at the end");
    text_.remove_prefix(word.size());
    trim();
    return word;
  }

  unsigned number() {
    const auto text = word();
    const auto value = parse_decimal(text);
    if (!value) throw std::invalid_argument("not a number: " + std::string(text));
    return *value;
  }

  bool on_or_off() {
    const auto text = word();
    if (text != "on" && text != "off") throw std::invalid_argument("\"on\" or \"off\" expected");
    return text == "on";
  }

  std::string rest() { return std::string(std::exchange(text_, {})); }

 private:
  void trim() { text_.remove_prefix(std::min(text_.find_first_not_of(blanks), text_.size())); }

  std::string_view text_;
};

std::string locomotive_list(EcosStation& station) {
  std::string list;
  for (const auto& [id, locomotive] : station.model().locomotives()) {
    if (!list.empty()) list += '\n';
    list += decimal(id) + " address " + decimal(locomotive.address) + " speed " +
            decimal(locomotive.speed) + (locomotive.direction ? " backward" : " forward") +
            (locomotive.holder ? " held by #" + decimal(*locomotive.holder) : "") + " " +
            quoted(locomotive.name);
  }
  return list.empty() ? "no locomotives" : list;
}

void add_locomotive(EcosStation& station, Words& words) {
  const auto text = words.rest();
  const auto colon = text.find(':');
  const auto address = parse_decimal(text.substr(0, colon));
  if (!address || *address > EcosLocomotive::max_address) {
    throw std::invalid_argument("ADDRESS:NAME expected, the address 0 to " +
                                decimal(EcosLocomotive::max_address));
  }
  const auto name = colon == std::string::npos ? "" : text.substr(colon + 1);
  station.add_locomotive(*address, name.empty() ? "Locomotive " + decimal(*address) : name);
}

void set_failure(EcosStation& station, Words& words) {
  const auto status = words.number();
  const auto times = words.word();
  const auto count = parse_decimal(times);
  if (!count && times != "all") throw std::invalid_argument("a number or \"all\" expected");
  station.faults().fail(words.rest(), status, count);
}

void set_pieces(EcosStation& station, Words& words) {
  station.faults().pieces = words.number();
  if (!words.empty()) station.faults().gap = std::chrono::milliseconds(words.number());
}

struct Entry {
  std::string_view name;
  std::string_view help;
  std::string (*run)(EcosStation&, Words&);
};

constexpr std::array commands{
    Entry{"go", "press GO on the station's front",
          [](EcosStation& s, Words&) { return s.press_go(), std::string(); }},
    Entry{"stop", "press STOP: track power off",
          [](EcosStation& s, Words&) { return s.press_stop(), std::string(); }},
    Entry{"emergency", "all speeds to 0 and track power off",
          [](EcosStation& s, Words&) { return s.press_emergency(), std::string(); }},
    Entry{"locomotive", "ADDRESS:NAME  enter a locomotive at the station",
          [](EcosStation& s, Words& w) { return add_locomotive(s, w), std::string(); }},
    Entry{"locomotives", "list the locomotives",
          [](EcosStation& s, Words&) { return locomotive_list(s); }},
    Entry{"late", "MS  wait before each message",
          [](EcosStation& s, Words& w) {
            s.faults().late = std::chrono::milliseconds(w.number());
            return std::string();
          }},
    Entry{"pieces", "BYTES [MS]  send in pieces, with a gap between them; 0 for whole messages",
          [](EcosStation& s, Words& w) { return set_pieces(s, w), std::string(); }},
    Entry{"garbage", "[TEXT]  send a text before each message",
          [](EcosStation& s, Words& w) { return s.faults().garbage = w.rest(), std::string(); }},
    Entry{"fail", "STATUS TIMES|all [PREFIX]  answer commands with an error",
          [](EcosStation& s, Words& w) { return set_failure(s, w), std::string(); }},
    Entry{"silent", "[PREFIX]  never answer commands",
          [](EcosStation& s, Words& w) { return s.faults().silence(w.rest()), std::string(); }},
    Entry{"refuse-control", "on|off  refuse requests for control",
          [](EcosStation& s, Words& w) {
            s.faults().refuse_control = w.on_or_off();
            return std::string();
          }},
    Entry{"drop", "hang up on all clients",
          [](EcosStation& s, Words&) { return s.drop_all(), std::string(); }},
    Entry{
        "drop-after", "N  hang up on the command after the next N",
        [](EcosStation& s, Words& w) { return s.faults().drop_after(w.number()), std::string(); }},
    Entry{"well", "behave well again: no faults",
          [](EcosStation& s, Words&) { return s.faults().clear(), std::string(); }},
};

std::string help() {
  std::string text;
  for (const auto& entry : commands) {
    text.append(entry.name).append("  ").append(entry.help).append("\n");
  }
  return text + "close  stop listening and hang up\nopen  listen on the same port again\n" +
         "quit  end the station";
}

}  // namespace

std::string StationConsole::run(std::string_view line) {
  Words words(line);
  if (words.empty()) return "";
  const auto name = words.word();
  if (name == "help") return help();
  if (name == "quit") return quit_(), "";
  if (name == "open") return open(), "";
  if (name == "close") return close(), "";
  for (const auto& entry : commands) {
    if (entry.name != name) continue;
    auto answer = entry.run(station_, words);
    if (!words.empty()) throw std::invalid_argument("too much: " + words.rest());
    return answer;
  }
  throw std::invalid_argument("no such command: " + std::string(name) + " (try help)");
}

void StationConsole::open() {
  if (station_.port() == 0) station_.listen(port_);
}

void StationConsole::close() {
  if (station_.port() != 0) port_ = station_.port();
  station_.stop();
}

}  // namespace zemblar::simulator

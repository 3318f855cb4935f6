#include <glib-unix.h>
#include <glibmm/main.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "simulator/stations/console_input.h"
#include "simulator/stations/station_console.h"

namespace zemblar::simulator {
namespace {

constexpr std::uint16_t standard_port = 15471;

constexpr auto usage = R"(Usage: zemblar-station [OPTION ...]
A simulated ECoS command station on 127.0.0.1.

  --port PORT              listen there (15471); 0 takes any free port
  --log FILE               append the conversation to a file
  --quiet                  do not print the conversation
  --locomotive ADDR:NAME   a locomotive that the station knows; may be repeated
  --late MS                wait before each message
  --pieces BYTES           send messages in pieces
  --garbage TEXT           send a text before each message
  --fail "STATUS TIMES|all [PREFIX]"
                           answer commands with an error; may be repeated
  --silent PREFIX          never answer commands that begin so; may be repeated
  --refuse-control on|off  refuse requests for control
  --drop-after N           hang up on the command after the next N

Commands are read from the standard input; "help" lists them.
)";

// Options that are commands of the console with another spelling.
constexpr std::array console_options{"--locomotive",     "--late",      "--pieces",
                                     "--garbage",        "--fail",      "--silent",
                                     "--refuse-control", "--drop-after"};

class Program {
 public:
  int run(int argc, char* argv[]);

 private:
  void read_options(int argc, char* argv[]);
  void read_option(const std::string& name, const std::string& value);
  void write_log(const EcosLogEntry& entry);

  Glib::RefPtr<Glib::MainLoop> loop_ = Glib::MainLoop::create();
  EcosStation station_;
  StationConsole console_{station_, [this] { loop_->quit(); }};
  std::ofstream log_file_;
  std::uint16_t port_ = standard_port;
  bool quiet_ = false;
  bool help_ = false;
};

int Program::run(int argc, char* argv[]) {
  read_options(argc, argv);
  if (help_) {
    std::cout << usage;
    return 0;
  }
  station_.log().on_entry([this](const EcosLogEntry& entry) { write_log(entry); });
  std::cout << "listening on 127.0.0.1:" << decimal(station_.listen(port_)) << std::endl;

  const auto quit = [](gpointer loop) -> gboolean {
    static_cast<Glib::MainLoop*>(loop)->quit();
    return G_SOURCE_CONTINUE;
  };
  g_unix_signal_add(SIGINT, quit, loop_.operator->());
  g_unix_signal_add(SIGTERM, quit, loop_.operator->());
  const ConsoleInput input([this](std::string_view line) { return console_.run(line); });
  loop_->run();
  station_.stop();
  return 0;
}

void Program::read_options(int argc, char* argv[]) {
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--help") {
      help_ = true;
    } else if (name == "--quiet") {
      quiet_ = true;
    } else if (i + 1 < argc) {
      read_option(name, argv[++i]);
    } else {
      throw std::invalid_argument(name + ": unknown, or its value is missing (try --help)");
    }
  }
}

void Program::read_option(const std::string& name, const std::string& value) {
  if (name == "--port") {
    const auto port = parse_decimal(value);
    if (!port || *port > 65535) throw std::invalid_argument("--port: 0 to 65535 expected");
    port_ = static_cast<std::uint16_t>(*port);
  } else if (name == "--log") {
    log_file_.open(value, std::ios::app);
    if (!log_file_) throw std::invalid_argument("Cannot write to " + value);
  } else if (std::ranges::count(console_options, name) > 0) {
    console_.run(name.substr(2) + " " + value);
  } else {
    throw std::invalid_argument(name + ": unknown option (try --help)");
  }
}

void Program::write_log(const EcosLogEntry& entry) {
  const auto line = format(entry);
  if (!quiet_) std::cout << line << std::endl;
  if (log_file_.is_open()) log_file_ << line << std::endl;
}

}  // namespace
}  // namespace zemblar::simulator

int main(int argc, char* argv[]) {
  try {
    return zemblar::simulator::Program().run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "zemblar-station: " << error.what() << '\n';
    return 1;
  }
}

#include "guard/guard_process.h"

#include <fcntl.h>
#include <glibmm/main.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace zemblar {
namespace {

constexpr int channel_in_guard = 3;
constexpr std::array crashes = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// For the handler, which may read nothing else.
volatile std::sig_atomic_t crash_channel = -1;
std::array<struct sigaction, crashes.size()> former;

/// Closes the channel and leaves the rest to who handled the signal before: the system as a rule.
extern "C" void on_crash(int number) {
  ::shutdown(crash_channel, SHUT_RDWR);
  for (std::size_t i = 0; i < crashes.size(); ++i) ::sigaction(crashes[i], &former[i], nullptr);
  ::raise(number);
}

// A stack that has overflowed holds no handler.
void give_handler_a_stack() {
  static std::array<char, 64 * 1024> memory;
  stack_t stack{};
  stack.ss_sp = memory.data();
  stack.ss_size = memory.size();
  ::sigaltstack(&stack, nullptr);
}

void close_channel_at_crash(int channel) {
  static bool installed = false;
  crash_channel = channel;
  if (std::exchange(installed, true)) return;
  give_handler_a_stack();
  struct sigaction action {};
  action.sa_handler = on_crash;
  action.sa_flags = SA_ONSTACK;
  for (std::size_t i = 0; i < crashes.size(); ++i) ::sigaction(crashes[i], &action, &former[i]);
}

void throw_if(int error) {
  if (error != 0) throw std::system_error(error, std::generic_category());
}

struct FileActions {
  FileActions() { throw_if(::posix_spawn_file_actions_init(&actions)); }
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  posix_spawn_file_actions_t actions{};
};

struct Attributes {
  Attributes() { throw_if(::posix_spawnattr_init(&attributes)); }
  ~Attributes() { ::posix_spawnattr_destroy(&attributes); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  posix_spawnattr_t attributes{};
};

// In a session of its own, with nothing of the program's but the channel: what the program holds
// must be free when it has ended.
pid_t spawn(const std::string& program, int channel) {
  FileActions files;
  auto* actions = &files.actions;
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    throw_if(::posix_spawn_file_actions_addopen(actions, standard, "/dev/null", O_RDWR, 0));
  }
  throw_if(::posix_spawn_file_actions_adddup2(actions, channel, channel_in_guard));
  throw_if(::posix_spawn_file_actions_addclosefrom_np(actions, channel_in_guard + 1));
  throw_if(::posix_spawn_file_actions_addchdir_np(actions, "/"));
  Attributes session;
  throw_if(::posix_spawnattr_setflags(&session.attributes, POSIX_SPAWN_SETSID));
  auto name = program;
  auto argument = std::to_string(channel_in_guard);
  const std::array<char*, 3> arguments = {name.data(), argument.data(), nullptr};
  pid_t process = 0;
  throw_if(::posix_spawn(&process, program.c_str(), actions, &session.attributes, arguments.data(),
                         environ));
  return process;
}

}  // namespace

GuardProcess::GuardProcess(const std::string& program)
    : GuardProcess(GuardChannel::make_pair(), program) {}

GuardProcess::GuardProcess(std::pair<GuardChannel, GuardChannel> ends, const std::string& program)
    : channel_(std::move(ends.first)) {
  process_ = spawn(program, ends.second.descriptor());
  close_channel_at_crash(channel_.descriptor());
  ended_ = Glib::signal_child_watch().connect(
      [this](GPid /*process*/, int status) { on_ended(status); }, process_);
}

GuardProcess::~GuardProcess() {
  if (crash_channel == channel_.descriptor()) crash_channel = -1;
}

std::string GuardProcess::default_program() {
  return std::filesystem::read_symlink("/proc/self/exe").replace_filename("zemblar-guard").string();
}

bool GuardProcess::tell(const guard::Message& message) {
  const auto* station = std::get_if<guard::Station>(&message);
  return channel_.send(encode(message), station ? station->order.line : -1);
}

void GuardProcess::take_leave() {
  if (!tell(guard::Leave{})) kill();
  ended_.disconnect();
}

void GuardProcess::kill() const {
  if (ended_.connected()) ::kill(process_, SIGKILL);
}

void GuardProcess::on_ended(int status) {
  signal_ended_.emit(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

}  // namespace zemblar

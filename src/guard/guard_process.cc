#include "guard/guard_process.h"

#include <fcntl.h>
#include <glibmm/error.h>
#include <sys/socket.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <utility>

namespace zemblar {
namespace {

constexpr int channel_in_guard = 3;
constexpr std::array crashes = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP};

// Read by the signal handler, which may use no other data.
volatile std::sig_atomic_t crash_channel = -1;
std::array<struct sigaction, crashes.size()> former;

/// Closes the channel, then raises the signal again for the former handler, as a rule the system's.
extern "C" void on_crash(int number) {
  ::shutdown(crash_channel, SHUT_RDWR);
  for (std::size_t i = 0; i < crashes.size(); ++i) ::sigaction(crashes[i], &former[i], nullptr);
  ::raise(number);
}

// A separate stack lets the handler run after a stack overflow.
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

// The guard inherits no descriptor but the channel, and no working directory: everything that the
// program uses must be free when the program has ended.
GSubprocess* spawn(const std::string& program, int channel) {
  const auto silent = static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE |
                                                    G_SUBPROCESS_FLAGS_STDERR_SILENCE);
  auto* launcher = g_subprocess_launcher_new(silent);
  g_subprocess_launcher_set_cwd(launcher, "/");
  g_subprocess_launcher_take_fd(launcher, ::fcntl(channel, F_DUPFD_CLOEXEC, 0), channel_in_guard);
  const auto argument = std::to_string(channel_in_guard);
  GError* error = nullptr;
  auto* process =
      g_subprocess_launcher_spawn(launcher, &error, program.c_str(), argument.c_str(), nullptr);
  g_object_unref(launcher);
  if (!process) Glib::Error::throw_exception(error);
  return process;
}

}  // namespace

GuardProcess::GuardProcess(const std::string& program)
    : GuardProcess(GuardChannel::make_pair(), program) {}

GuardProcess::GuardProcess(std::pair<GuardChannel, GuardChannel> ends, const std::string& program)
    : channel_(std::move(ends.first)), process_(spawn(program, ends.second.descriptor())) {
  close_channel_at_crash(channel_.descriptor());
  g_subprocess_wait_async(process_, waiting_->gobj(), &GuardProcess::on_ended, this);
}

GuardProcess::~GuardProcess() {
  waiting_->cancel();
  g_object_unref(process_);
  if (crash_channel == channel_.descriptor()) crash_channel = -1;
}

std::string GuardProcess::default_program() {
  return std::filesystem::read_symlink("/proc/self/exe").replace_filename("zemblar-guard").string();
}

bool GuardProcess::send(const guard::Message& message) {
  const auto* station = std::get_if<guard::Station>(&message);
  return channel_.send(encode(message), station ? station->order.line : -1);
}

void GuardProcess::take_leave() {
  if (!send(guard::Leave{})) kill();
  waiting_->cancel();
}

void GuardProcess::kill() const {
  g_subprocess_force_exit(process_);
}

// The GuardProcess may be destroyed when the wait was cancelled, so it is used only after success.
void GuardProcess::on_ended(GObject* /*source*/, GAsyncResult* result, gpointer guard) {
  auto* process = G_SUBPROCESS(g_async_result_get_source_object(result));
  if (g_subprocess_wait_finish(process, result, nullptr)) {
    const int status =
        g_subprocess_get_if_exited(process) ? g_subprocess_get_exit_status(process) : -1;
    static_cast<GuardProcess*>(guard)->signal_ended_.emit(status);
  }
  g_object_unref(process);
}

}  // namespace zemblar

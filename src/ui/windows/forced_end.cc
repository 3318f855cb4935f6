#include "ui/windows/forced_end.h"

#include <glib-unix.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "core/recovery_copy.h"
#include "core/status.h"

// Included last, because it defines macros with names used in our headers.
#include <X11/Xlib.h>

namespace zemblar {
namespace {

void keep_work() noexcept try {
  if (auto* copies = RecoveryCopy::get()) copies->finish(RecoveryCopy::End::forced);
} catch (...) {
  std::cerr << "zemblar: unsaved work could not be kept" << std::endl;
}

gboolean end_by_signal(gpointer number) {
  keep_work();
  std::signal(GPOINTER_TO_INT(number), SIG_DFL);
  ::raise(GPOINTER_TO_INT(number));
  return G_SOURCE_REMOVE;
}

bool is_ignored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Windows must not be used any more, so the status line is not updated.
int end_without_display(Display* /*display*/) {
  signal_status_changed().block();
  keep_work();
  std::cerr << "zemblar: the connection to the X server is lost" << std::endl;
  ::_exit(1);
}

}  // namespace

void keep_work_at_forced_end() {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    if (!is_ignored(number)) g_unix_signal_add(number, end_by_signal, GINT_TO_POINTER(number));
  }
  XSetIOErrorHandler(end_without_display);
}

}  // namespace zemblar

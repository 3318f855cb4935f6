// How long a person waits for the first window, against a bare program of the same toolkit.

#include <X11/Xlib.h>
#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <glibmm/spawn.h>
#include <poll.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <string>

#include "benchmarks/ratio.h"

namespace zemblar::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// The splash has the screen to itself that long. The wait is meant; what comes on top is not.
constexpr Milliseconds splash_delay{1500};
constexpr std::chrono::seconds patience{20};

/// Sees the windows that other programs put on the screen. No window manager may run there, as
/// it would put them into frames of its own.
class Screen {
 public:
  Screen() : display_(XOpenDisplay(nullptr), XCloseDisplay) {
    if (!display_) throw std::runtime_error("the start of the program is measured on a display");
    // A window may be gone again when it is asked for its title.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    XSelectInput(display_.get(), DefaultRootWindow(display_.get()), SubstructureNotifyMask);
    XSync(display_.get(), False);
  }

  void forget() { XSync(display_.get(), True); }

  void wait_for(const std::string& title) {
    const auto end = Clock::now() + patience;
    while (Clock::now() < end) {
      while (XPending(display_.get()) > 0) {
        XEvent event;
        XNextEvent(display_.get(), &event);
        if (event.type == MapNotify && title_of(event.xmap.window).ends_with(title)) return;
      }
      pollfd connection{ConnectionNumber(display_.get()), POLLIN, 0};
      poll(&connection, 1, 100);
    }
    throw std::runtime_error("no window came whose title ends with " + title);
  }

 private:
  std::string title_of(Window window) {
    const auto property = XInternAtom(display_.get(), "_NET_WM_NAME", False);
    const auto utf8 = XInternAtom(display_.get(), "UTF8_STRING", False);
    constexpr long most = 64;  // of four bytes
    Atom type = None;
    int format = 0;
    unsigned long count = 0, left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display_.get(), window, property, 0, most, False, utf8, &type, &format,
                       &count, &left, &bytes);
    if (!bytes) return {};
    const std::unique_ptr<unsigned char, int (*)(void*)> owned(bytes, XFree);
    return {bytes, bytes + count};
  }

  std::unique_ptr<Display, int (*)(Display*)> display_;
};

/// A folder of its own for what the program remembers, so that every start is a first one.
class EmptyHome {
 public:
  EmptyHome() : path_(Glib::build_filename(Glib::get_tmp_dir(), "zemblar-bench-XXXXXX")) {
    if (!g_mkdtemp(path_.data())) throw std::runtime_error("no temporary folder");
    Glib::setenv("XDG_CONFIG_HOME", path_);
    Glib::setenv("LC_ALL", "C.UTF-8");  // windows are known by their English titles
  }
  ~EmptyHome() {
    g_unlink(Glib::build_filename(path_, "zemblar", "options.ini").c_str());
    g_rmdir(Glib::build_filename(path_, "zemblar").c_str());
    g_rmdir(path_.c_str());
  }

 private:
  std::string path_;
};

struct Process {
  explicit Process(const std::string& program) {
    Glib::spawn_async(std::string(), std::vector<std::string>{program},
                      Glib::SPAWN_DO_NOT_REAP_CHILD | Glib::SPAWN_STDOUT_TO_DEV_NULL |
                          Glib::SPAWN_STDERR_TO_DEV_NULL,
                      sigc::slot<void>(), &pid);
  }
  ~Process() {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  Glib::Pid pid = 0;
};

double until_shown(Screen& screen, const std::string& program, const std::string& title) {
  screen.forget();
  const auto start = Clock::now();
  const Process process(program);
  screen.wait_for(title);
  return Milliseconds(Clock::now() - start).count();
}

struct Scene {
  Scene() {
    if (Glib::getenv("DBUS_SESSION_BUS_ADDRESS").empty()) {
      throw std::runtime_error("the start of the program is measured in a session with a bus");
    }
  }
  Screen screen;
  EmptyHome home;
};

const Figure first_window("start: first window less the splash's wait, to a bare window", "ms", 2.2,
                          [](Effort) {
                            auto scene = std::make_shared<Scene>();
                            return [scene] {
                              auto& screen = scene->screen;
                              Sample sample;
                              sample.floor = until_shown(screen, BARE_WINDOW, "Bare Window");
                              sample.figure = until_shown(screen, ZEMBLAR, "Track Editor") -
                                              splash_delay.count();
                              return sample;
                            };
                          });

}  // namespace
}  // namespace zemblar::bench

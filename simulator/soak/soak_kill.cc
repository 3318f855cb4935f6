#include "simulator/soak/soak_kill.h"

#include <glibmm/convert.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <new>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>

#include "core/layout.h"
#include "core/recovery_copy.h"
#include "core/status.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "simulator/soak/soak_process.h"
#include "simulator/soak/temporary_home.h"
#include "track/zone.h"

namespace zemblar::simulator {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::array file_names{"one.zblt", "two.zblt", "linked.zblt"};
constexpr unsigned linked = 2;
constexpr auto longest_life = 300ms;
constexpr unsigned most_zones = 200;

/// What the killed process has told of its saves, in memory that outlives it. A state is a number.
struct Progress {
  std::array<std::atomic<unsigned>, file_names.size()> begun;
  std::array<std::atomic<unsigned>, file_names.size()> done;
  std::atomic<unsigned> saves;
  std::atomic<unsigned> state;
};

Progress& make_progress() {
  void* memory =
      ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
  return *new (memory) Progress{};
}

/// Where the layouts are, and what the program keeps of its user.
class Home {
 public:
  Home() { fs::create_directory(layouts()); }

  [[nodiscard]] std::string layouts() const { return home_.path() + "/layouts"; }
  [[nodiscard]] std::string recovery() const { return home_.path() + "/config/zemblar/recovery"; }
  [[nodiscard]] std::string data() const { return home_.path() + "/data/zemblar"; }
  [[nodiscard]] std::string file(unsigned index) const {
    return layouts() + '/' + file_names.at(index);
  }

 private:
  TemporaryHome home_;
};

// --- States of the document ---

bool has_station(unsigned state) {
  return state % 3 == 0;
}
bool has_group(unsigned state) {
  return state % 4 == 0;
}
unsigned zone_count(unsigned state) {
  return most_zones / 2 + state % (most_zones / 2);
}

void make_state(unsigned state) {
  auto& layout = Layout::get();
  for (auto* toplevel : {&layout.get_blocks(), &layout.get_devices(), &layout.get_loks()}) {
    toplevel->destroy_children();
  }
  layout.set_name(Glib::ustring::format(state));
  for (unsigned i = 0; i < zone_count(state); ++i) layout.get_blocks().add(new Zone);
  if (has_station(state)) layout.get_devices().add(new ECoS);
  if (has_group(state)) layout.get_loks().add(new LokGroup);
}

/// The state that the document is in, if nothing of it is missing.
std::optional<unsigned> state_of_document() {
  auto& layout = Layout::get();
  if (layout.get_blocks().empty()) return std::nullopt;
  const auto state = static_cast<unsigned>(std::stoul(layout.get_name()));
  const bool whole = layout.get_blocks().child_count() == zone_count(state) &&
                     layout.get_devices().child_count() == (has_station(state) ? 1U : 0U) &&
                     layout.get_loks().child_count() == (has_group(state) ? 1U : 0U);
  return whole ? std::optional(state) : std::nullopt;
}

// --- The process that is killed ---

class Worker {
 public:
  Worker(const Home& home, Progress& progress, std::uint64_t seed)
      : home_(home), progress_(progress), random_(seed), copies_(home.recovery()) {}

  [[noreturn]] void run() {
    Layout::open(home_.file(any_file()));
    copies_.start({});
    for (;;) {
      make_state(++progress_.state);
      if (random_() % 2 == 0) write_copy();
      save(any_file());
    }
  }

 private:
  unsigned any_file() { return static_cast<unsigned>(random_() % file_names.size()); }
  void write_copy() {
    clock_.advance(10s);
    for (int i = 0; i < 100; ++i) Glib::MainContext::get_default()->iteration(false);
  }
  void save(unsigned index) {
    const auto path = home_.file(index);
    progress_.begun.at(index) = progress_.state.load();
    if (Layout::get().get_path() == path) {
      Layout::get().save();
    } else {
      Layout::get().save_to(Glib::filename_to_uri(path), true);
    }
    progress_.done.at(index) = progress_.state.load();
    ++progress_.saves;
  }

  const Home& home_;
  Progress& progress_;
  std::minstd_rand random_;
  VirtualClock clock_;
  RecoveryCopy copies_;
};

[[noreturn]] void work(const Home& home, Progress& progress, std::uint64_t seed) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // it never ends by itself
  try {
    Layout::get().new_document(true);
    Worker(home, progress, seed).run();
  } catch (const std::exception& error) {
    ::fprintf(stderr, "%s\n", error.what());
  } catch (const Glib::Exception& error) {
    ::fprintf(stderr, "%s\n", error.what().c_str());
  }
  ::_exit(1);
}

// --- What is there afterwards ---

class Inspector {
 public:
  Inspector(const Home& home, Progress& progress) : home_(home), progress_(progress) {}

  void run() {
    copies_.start({});
    for (unsigned i = 0; i < file_names.size(); ++i) inspect(i);
    expect_only(home_.layouts(), {".zblt", ".zblt.complete", ".twin"});
    expect_only(home_.recovery(), {".kept", ".current"});
    expect_only(fs::path(home_.recovery()).parent_path(),
                {"options.ini", "recovery", "recovery.lock-0"});
    expect_only(home_.data() + "/writing", {});
    expect_only(home_.data() + "/saved-copies", {});
  }

 private:
  void inspect(unsigned index) {
    Layout::get().new_document(true);
    const auto file = home_.file(index);
    if (progress_.done.at(index) == 0 && !fs::exists(file)) return;
    if (Layout::open(file) && accept(index)) return;
    // A file with two names can be found half written; as it was before is offered then.
    if (index == linked && is_offered(index)) return;
    throw std::runtime_error(file + " holds " + Layout::get().get_name() + ", saved was " +
                             std::to_string(progress_.done.at(index)) + ", begun " +
                             std::to_string(progress_.begun.at(index)) + "; " + get_status());
  }

  bool is_offered(unsigned index) {
    Layout::get().new_document(true);
    for (const auto& entry : copies_.offered()) {
      if (entry.about.layout != home_.file(index)) continue;
      copies_.open(entry.file);
      if (accept(index)) return true;
    }
    return false;
  }

  /// Whether the document is what was saved or was being saved. The next kill finds it as saved.
  [[nodiscard]] bool accept(unsigned index) {
    const auto state = state_of_document();
    if (state != progress_.done.at(index) && state != progress_.begun.at(index)) return false;
    progress_.done.at(index) = *state;
    progress_.begun.at(index) = *state;
    return true;
  }

  static void expect_only(const fs::path& folder, const std::vector<std::string>& endings) {
    if (!fs::exists(folder)) return;
    for (const auto& entry : fs::directory_iterator(folder)) {
      const auto name = entry.path().filename().string();
      const auto fits = [&](const std::string& ending) { return name.ends_with(ending); };
      if (!std::ranges::any_of(endings, fits)) throw std::runtime_error("left over: " + name);
    }
  }

  const Home& home_;
  Progress& progress_;
  VirtualClock clock_;
  RecoveryCopy copies_{home_.recovery()};
};

// --- One moment ---

class Kills {
 public:
  explicit Kills(std::uint64_t seed) : random_(seed), progress_(make_progress()) {}

  /// What went wrong; empty for nothing.
  std::string run_moment() {
    link_again();
    const auto child = ::fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) work(home_, progress_, random_());
    std::this_thread::sleep_for(
        std::chrono::microseconds(random_() % std::chrono::microseconds(longest_life).count()));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFSIGNALED(status)) return "the process ended by itself";
    interrupted_ += is_interrupted() ? 1 : 0;
    const auto outcome = run_in_process([this] {
      Layout::get().new_document(true);
      Inspector(home_, progress_).run();
    });
    return outcome.ended_well ? std::string() : outcome.said;
  }

  [[nodiscard]] unsigned saves() const { return progress_.saves; }
  [[nodiscard]] unsigned interrupted() const { return interrupted_; }

 private:
  void link_again() const {
    const auto file = home_.file(linked);
    if (fs::exists(file) && fs::hard_link_count(file) == 1) {
      fs::remove(file + ".twin");
      fs::create_hard_link(file, file + ".twin");
    }
  }
  [[nodiscard]] bool is_interrupted() const {
    return !std::ranges::equal(progress_.begun, progress_.done);
  }

  Home home_;
  std::minstd_rand random_;
  Progress& progress_;
  unsigned interrupted_ = 0;
};

}  // namespace

KillResult run_kills(const KillOptions& options) {
  Kills kills(options.seed);
  KillResult result;
  for (unsigned moment = 1; moment <= options.moments && result.trouble.empty(); ++moment) {
    result.trouble = kills.run_moment();
    if (!result.trouble.empty()) {
      result.trouble = "moment " + std::to_string(moment) + ": " + result.trouble;
    }
  }
  result.saves = kills.saves();
  result.interrupted = kills.interrupted();
  return result;
}

}  // namespace zemblar::simulator

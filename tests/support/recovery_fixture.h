#pragma once

#include <fcntl.h>
#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/main.h>
#include <sys/stat.h>

#include <memory>

#include "core/recovery_copy.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"
#include "track/zone.h"

namespace zemblar::test {

using namespace std::chrono_literals;

/// A person's run of the program with one layout file, `harbour.zblt`. Ends and starts again.
class RecoveryTest : public LayoutTest {
 protected:
  RecoveryTest() {
    layout().new_document(true);
    begin();
  }

  void begin(const std::string& wanted = {}) {
    copy = std::make_unique<RecoveryCopy>(folder.file("recovery"));
    copy->start(wanted);
    settle();
  }
  /// Long enough for a copy to be written.
  void settle() {
    clock.advance(10s);
    while (Glib::MainContext::get_default()->iteration(false)) {
    }
  }
  void kill() { copy.reset(); }
  void quit() {
    copy->finish();
    copy.reset();
  }
  /// What the program does at its start.
  void start_again(const std::string& remembered) {
    layout().new_document(true);
    if (!remembered.empty()) Layout::open(remembered);
    begin(remembered);
  }

  void save() { layout().save_to(Glib::filename_to_uri(path()), true); }
  void add_zone(const char* name) { layout().get_blocks().add(new Zone)->set_name(name); }
  /// The names of the zones, as "Quay Yard".
  static std::string zones() {
    std::string names;
    for (auto* zone : layout().get_blocks()) names += (names.empty() ? "" : " ") + zone->get_name();
    return names;
  }
  bool says(const char* part) { return get_status().raw().find(part) != std::string::npos; }
  void open_newest() { copy->open(copy->offered().at(0).file); }
  std::string path() { return folder.file("harbour.zblt"); }
  /// Moves the time of the last save.
  void make_file_newer() {
    const timespec times[] = {{0, UTIME_NOW}, {time(nullptr) + 100, 0}};
    utimensat(AT_FDCWD, path().c_str(), times, 0);
  }

  VirtualClock clock;
  std::unique_ptr<RecoveryCopy> copy;
};

}  // namespace zemblar::test

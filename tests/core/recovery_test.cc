#include <fcntl.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/main.h>
#include <sys/stat.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/document_text.h"
#include "core/recovery_copy.h"
#include "devices/device_ecos.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"
#include "track/zone.h"

namespace zemblar::test {
namespace {

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

TEST_F(RecoveryTest, finds_what_was_not_saved_when_the_program_was_killed) {
  add_zone("Quay");
  save();
  const auto saved = bytes_of(path());
  settle();
  add_zone("Yard");
  settle();
  kill();
  make_file_newer();  // in vain: the end was not in good order
  start_again(path());
  EXPECT_EQ(zones(), "Quay");
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  ASSERT_EQ(copy->offered().size(), 1u);

  add_zone("Crane");  // is kept as well, and overwrites nothing
  settle();
  open_newest();
  EXPECT_EQ(zones(), "Quay Yard");
  EXPECT_EQ(layout().get_path(), path());
  EXPECT_EQ(bytes_of(path()), saved);
  ASSERT_EQ(copy->offered().size(), 2u);
  open_newest();
  EXPECT_EQ(zones(), "Quay Crane");
  settle();

  layout().save();
  quit();
  start_again(path());
  EXPECT_EQ(get_status(), "");
  EXPECT_EQ(zones(), "Quay Crane");
}

TEST_F(RecoveryTest, leaves_nothing_behind_when_everything_is_in_the_file) {
  add_zone("Quay");
  save();
  const struct {
    const char* what;
    std::function<void()> work;
  } cases[] = {
      {"nothing done", [] {}},
      {"saved after a change",
       [this] {
         add_zone("Yard");
         settle();
         layout().save();
       }},
      {"changed and changed back",
       [this] {
         layout().set_name("Other");
         settle();
         layout().set_name("New Layout");
         settle();
       }},
      {"a change that is in no file",
       [] { layout().set_block_control(!layout().get_block_control()); }},
  };
  for (const auto& one : cases) {
    for (bool in_good_order : {true, false}) {
      settle();
      one.work();
      in_good_order ? quit() : kill();
      start_again(path());
      EXPECT_EQ(get_status(), "") << one.what;
      EXPECT_TRUE(copy->offered().empty()) << one.what;
    }
  }
}

TEST_F(RecoveryTest, offers_after_quit_only_what_is_newer_than_the_file) {
  save();
  settle();
  add_zone("Yard");
  quit();
  start_again(path());
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  EXPECT_EQ(copy->offered().size(), 1u);

  add_zone("Crane");
  quit();
  make_file_newer();
  start_again(path());
  EXPECT_EQ(get_status(), "");
}

TEST_F(RecoveryTest, keeps_what_new_and_open_drop_and_save_as_replaces) {
  add_zone("Quay");
  save();
  settle();
  add_zone("Yard");  // dropped before any copy is due
  ASSERT_TRUE(Layout::open(path()));
  EXPECT_TRUE(says("The unsaved work on harbour.zblt is kept: choose File, Further"))
      << get_status();
  EXPECT_EQ(zones(), "Quay");
  settle();
  clear_status();
  layout().new_document(true);
  EXPECT_EQ(get_status(), "") << "nothing was unsaved";

  add_zone("Island");
  settle();
  ASSERT_TRUE(Layout::open(path()));
  EXPECT_TRUE(says("a layout without a file is kept: choose File, New")) << get_status();
  EXPECT_EQ(copy->offered().size(), 1u) << "what has no file would end up in this one";

  layout().new_document(true);
  EXPECT_EQ(copy->offered().size(), 2u);
  add_zone("Bridge");
  save();
  ASSERT_EQ(copy->offered().size(), 2u);
  EXPECT_EQ(copy->offered()[0].about.kind, KeptText::Kind::replaced);
  open_newest();
  EXPECT_EQ(zones(), "Quay");
  EXPECT_EQ(layout().get_path(), path());
}

TEST_F(RecoveryTest, carries_what_a_layout_file_cannot_hold) {
  save();
  settle();
  auto* station = layout().get_devices().add(new ECoS);
  station->set_name("Station");
  layout().get_loks().add(new Lok)->set_name("Locomotive");
  auto* group = layout().get_loks().add(new LokGroup);
  group->set_name("Freight");
  const auto before = DocumentText::whole();
  layout().save();  // cuts the file off
  settle();
  quit();
  start_again(path());
  EXPECT_TRUE(says("Couldn't open")) << get_status();
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  open_newest();
  EXPECT_EQ(DocumentText::whole(), before);
  EXPECT_TRUE(layout().get_devices().find_child("Station"));
  EXPECT_TRUE(layout().get_loks().find_child("Locomotive"));
  EXPECT_FALSE(layout().get_file());
}

TEST_F(RecoveryTest, tells_of_damaged_copies_and_changes_nothing) {
  save();
  settle();
  add_zone("Yard");
  settle();
  kill();
  start_again(path());
  const auto entry = copy->offered().at(0).file;
  const auto bytes = bytes_of(entry);
  add_zone("Kept");
  for (const auto& damaged : {bytes.substr(0, bytes.size() / 2), bytes.substr(0, 30), std::string(),
                              "x" + bytes, KeptText{.layout = path(), .text = "title: ["}.bytes(),
                              KeptText{.layout = path(), .text = "objects: [!ship {}]"}.bytes()}) {
    Glib::file_set_contents(entry, damaged);
    copy->open(entry);
    EXPECT_TRUE(says("Couldn't open")) << get_status() << " for " << damaged;
    EXPECT_EQ(zones(), "Kept");
    EXPECT_EQ(layout().get_path(), path());
  }
  kill();
  Glib::file_set_contents(RecoveryFolder(folder.file("recovery")).current_file(path()), "damaged");
  start_again(path());
  EXPECT_TRUE(says("A recovery copy was found, but it is damaged")) << get_status();
  EXPECT_EQ(zones(), "");
}

TEST_F(RecoveryTest, keeps_the_newest_twenty) {
  save();
  for (int i = 0; i < 30; ++i) {
    settle();
    layout().set_name("Harbour " + Glib::ustring::format(i));
    layout().new_document(true);
    ASSERT_TRUE(Layout::open(path()));
  }
  ASSERT_EQ(copy->offered().size(), 20u);
  open_newest();
  EXPECT_EQ(layout().get_name(), "Harbour 29");
}

TEST_F(RecoveryTest, goes_on_when_no_copy_can_be_written) {
  kill();
  folder.write("recovery", "a file where the folder should be");
  begin();
  add_zone("Quay");
  for (int wait = 0; wait < 1000 && get_status().empty(); ++wait) {
    settle();
    g_usleep(1000);  // the disk has a time of its own
  }
  EXPECT_TRUE(says("The recovery copy could not be written")) << get_status();
  // It is tried again, though nothing changes any more.
  g_unlink(folder.file("recovery").c_str());
  const auto written = [this] {
    const auto path = folder.file("recovery");
    return Glib::file_test(path, Glib::FILE_TEST_IS_DIR) && Glib::Dir(path).read_name() != "";
  };
  for (int wait = 0; wait < 1000 && !written(); ++wait) {
    settle();
    g_usleep(1000);
  }
  EXPECT_TRUE(written());
  quit();
  start_again({});
  ASSERT_EQ(copy->offered().size(), 1u);
  open_newest();
  EXPECT_EQ(zones(), "Quay");
}

void fill(unsigned count) {
  for (unsigned i = 0; i < count; i += 4) {
    auto* lok = Layout::get().get_loks().add(new Lok);
    for (int n = 0; n < 3; ++n) lok->add(new Function(lok));
  }
}

TEST_F(RecoveryTest, writes_a_large_document_in_small_parts) {
  fill(10000);
  DocumentText text;
  std::size_t parts = 0;
  std::size_t longest = 0;
  for (std::size_t before = 0; text.write_part(); before = text.size()) {
    longest = std::max(longest, text.size() - before);
    ++parts;
  }
  EXPECT_GE(parts, 2500u);
  EXPECT_LE(longest, 2000u);
  EXPECT_EQ(text.text(), DocumentText::whole());
}

TEST_F(RecoveryTest, begins_again_when_an_object_ends_or_comes_in_the_middle) {
  const std::function<void()> disturbances[] = {
      [] { layout().get_loks().child_at(0)->destroy(); },
      [] { layout().get_loks().destroy_children(); },
      [] { layout().get_loks().add(new Lok); },
      [] { layout().new_document(true); },
      [this] { ASSERT_TRUE(Layout::open(path())); },
  };
  for (const auto& disturb : disturbances) {
    for (int slices : {1, 4}) {
      layout().new_document(true);
      fill(1500);
      save();  // begins to write
      for (int i = 0; i < slices; ++i) Glib::MainContext::get_default()->iteration(false);
      disturb();
      const auto changed = DocumentText::whole();
      settle();
      kill();
      const RecoveryFolder copies(folder.file("recovery"));
      const auto written = RecoveryFolder::read(copies.current_file(layout().get_path()));
      const bool unsaved = layout().get_file() && layout().serialize() != bytes_of(path());
      ASSERT_EQ(written.has_value(), unsaved);
      if (unsaved) {
        EXPECT_EQ(written->text, changed);
      }
      begin();
    }
  }
}

}  // namespace
}  // namespace zemblar::test

#include <fcntl.h>
#include <giomm/error.h>
#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/main.h>
#include <sys/stat.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/document_text.h"
#include "core/file_bytes.h"
#include "core/recovery_copy.h"
#include "core/recovery_slot.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "tests/support/recovery_fixture.h"
#include "track/zone.h"

namespace zemblar::test {
namespace {

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

TEST_F(RecoveryTest, leaves_the_work_of_a_program_alone_that_runs_beside_it) {
  save();
  kill();
  auto other = std::make_unique<RecoveryFolder>(folder.file("recovery"));
  const auto theirs = other->current_file(path());
  const KeptText work{.layout = path(), .time = g_get_real_time(), .text = DocumentText::whole()};
  g_mkdir(folder.file("recovery").c_str(), 0700);
  Glib::file_set_contents(theirs, work.bytes_with("title: Theirs"));
  start_again(path());
  EXPECT_FALSE(says("Unsaved work"));
  EXPECT_TRUE(copy->offered().empty());
  add_zone("Ours");
  settle();
  kill();
  EXPECT_TRUE(Glib::file_test(theirs, Glib::FILE_TEST_EXISTS));
  other.reset();  // that program ends as well
  start_again(path());
  EXPECT_TRUE(says("Unsaved work")) << get_status();
  EXPECT_EQ(copy->offered().size(), 2u);
}

TEST_F(RecoveryTest, finds_the_work_on_every_layout_that_nobody_works_on) {
  add_zone("Quay");
  save();
  add_zone("Yard");
  settle();
  kill();
  ASSERT_EQ(g_rename(path().c_str(), folder.file("moved.zblt").c_str()), 0);
  start_again(folder.file("moved.zblt"));
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  EXPECT_TRUE(says("choose File, New and then File, Recover Unsaved Work")) << get_status();
  EXPECT_THROW(layout().save_to("file:///proc/stick.zblt", true), Gio::Error);
  add_zone("Mole");
  settle();
  kill();
  start_again(folder.file("moved.zblt"));
  EXPECT_TRUE(says("Unsaved work on stick.zblt was found")) << get_status();
  layout().new_document(true);
  ASSERT_EQ(copy->offered().size(), 2u);
  open_newest();
  EXPECT_EQ(zones(), "Quay Mole");
}

TEST(RecoverySlot, belongs_to_one_program_whatever_stands_in_its_way) {
  const TemporaryFolder folder;
  const auto lock = [&](int n) { return folder.file("recovery.lock-" + std::to_string(n)); };
  const RecoverySlot first(folder.file("recovery"));
  for (int n = 1; n < 16; ++n) g_mkdir(lock(n).c_str(), 0700);
  const RecoverySlot second(folder.file("recovery"));
  const RecoverySlot third(folder.file("other/recovery"));
  EXPECT_EQ(first.number(), 0u);
  EXPECT_GE(second.number(), 16u);
  EXPECT_TRUE(second.is_free(second.number()));
  EXPECT_FALSE(second.is_free(first.number()));
  EXPECT_FALSE(first.is_free(second.number())) << "its process runs";
  EXPECT_FALSE(first.is_free(1)) << "nobody knows";
  EXPECT_TRUE(third.is_free(1)) << "never taken";
}

TEST_F(RecoveryTest, leaves_nothing_behind_when_everything_is_in_the_file) {
  add_zone("Quay");
  save();
  const std::function<void()> cases[] = {
      [] {},
      [this] { add_zone("Yard"), settle(), layout().save(); },
      [this] { layout().set_name("Other"), settle(), layout().set_name("New Layout"), settle(); },
      // In no file:
      [] { layout().set_block_control(!layout().get_block_control()); },
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    for (bool in_good_order : {true, false}) {
      settle();
      cases[i]();
      in_good_order ? quit() : kill();
      start_again(path());
      EXPECT_EQ(get_status(), "") << i;
      EXPECT_TRUE(copy->offered().empty()) << i;
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
  EXPECT_TRUE(says("The unsaved work on harbour.zblt is kept: choose File, Recover Unsaved Work."))
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

TEST_F(RecoveryTest, keeps_what_somebody_else_has_written_before_save_replaces_it) {
  const auto foreign = [this](const char* name) {
    Glib::file_set_contents(
        path(), "%YAML 1.2\ntitle: T\nobjects:\n  - !zone\n    name: " + std::string(name) + "\n");
  };
  save();
  ASSERT_TRUE(Layout::open(path()));
  make_file_newer();  // the same bytes
  layout().save();
  EXPECT_EQ(get_status(), "Saved harbour.zblt");
  unlink(path().c_str());
  layout().save();
  EXPECT_EQ(get_status(), "Saved harbour.zblt");
  EXPECT_TRUE(copy->offered().empty());

  add_zone("Mine");
  for (const auto* name : {"First", "Theirs"}) {
    foreign(name);
    layout().save();
    EXPECT_TRUE(says("Saved harbour.zblt. Somebody else had changed it")) << get_status();
  }
  ASSERT_EQ(copy->offered().size(), 2u) << "each of them";
  layout().save();
  EXPECT_EQ(get_status(), "Saved harbour.zblt");
  open_newest();
  EXPECT_EQ(zones(), "Theirs");

  foreign("Precious");
  kill();
  system(("rm -rf " + folder.file("recovery")).c_str());
  folder.write("recovery", "no place for copies");
  begin();
  EXPECT_THROW(layout().save(), Gio::Error);
  EXPECT_NE(bytes_of(path()).find("Precious"), std::string::npos);
  save();
  EXPECT_TRUE(says("Saved harbour.zblt. What was there before could not be kept.")) << get_status();
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

TEST_F(RecoveryTest, offers_a_file_as_it_was_before_somebody_was_stopped_while_writing_into_it) {
  add_zone("Quay");
  save();
  const auto whole = bytes_of(path());
  const auto copies = Glib::build_filename(Glib::get_user_data_dir(), "zemblar", "saved-copies");
  const auto old = Glib::build_filename(copies, digest_of(path()).substr(0, 32) + ".zblt");
  g_mkdir_with_parents(copies.c_str(), 0700);
  const struct {
    std::string file;
    bool offered;
  } cases[] = {{whole, false}, {whole.substr(0, 40), true}, {"title: [", true}};
  for (const auto& one : cases) {
    kill();
    Glib::file_set_contents(old, whole);
    Glib::file_set_contents(path(), one.file);
    start_again(path());
    EXPECT_FALSE(Glib::file_test(old, Glib::FILE_TEST_EXISTS));
    EXPECT_EQ(says("harbour.zblt may not have been written to its end"), one.offered)
        << get_status();
    if (!one.offered) continue;
    open_newest();
    EXPECT_EQ(zones(), "Quay");
  }
}

TEST_F(RecoveryTest, keeps_twenty_of_each_layout_and_unsaved_work_longest) {
  const RecoveryFolder copies(folder.file("recovery"));
  g_mkdir(folder.file("recovery").c_str(), 0700);
  const auto put = [&](const std::string& layout, gint64 time, KeptText::Kind kind) {
    const KeptText kept{.kind = kind, .layout = layout, .time = time, .text = "title: T\n"};
    Glib::file_set_contents(copies.free_file(layout, time), kept.bytes());
  };
  put("/another.zblt", 1, KeptText::Kind::replaced);
  for (int i = 0; i < 5; ++i) put(path(), 10 + i, KeptText::Kind::unsaved);
  for (int i = 0; i < 30; ++i) put(path(), 100 + i, KeptText::Kind::replaced);
  copies.prune();
  const auto entries = copies.entries();
  ASSERT_EQ(entries.size(), 21u);
  // The newest come first: the layout's 15 replaced ones, its unsaved ones, the other layout's.
  EXPECT_EQ(entries[14].about.time, 115);
  EXPECT_EQ(entries[15].about.time, 14);
  EXPECT_EQ(entries[19].about.time, 10);
  for (int i = 0; i < 20; ++i) put(path(), 20 + i, KeptText::Kind::unsaved);
  put(path(), 1000, KeptText::Kind::replaced);
  copies.prune();
  EXPECT_EQ(copies.entries().size(), 21u);
  EXPECT_EQ(copies.entries()[0].about.time, 1000) << "the newest stays, whatever it is";
  EXPECT_EQ(copies.entries()[1].about.time, 39);
}

TEST_F(RecoveryTest, passes_over_what_cannot_be_an_entry_and_says_so_once) {
  save();
  settle();
  kill();
  g_mkdir(folder.file("recovery").c_str(), 0700);
  // Nobody may hold the folder's first number while the program runs.
  const auto copies = [&] { return RecoveryFolder(folder.file("recovery")); };
  const auto name = [&](int n) { return copies().free_file(path(), n); };
  const auto in_year = [](gint64 year) { return (year - 1970) * 31'556'952 * G_USEC_PER_SEC; };
  const auto put = [](const std::string& file, const std::string& bytes) {
    Glib::file_set_contents(file, bytes);
  };
  const std::function<void()> oddities[] = {
      [&] { ASSERT_EQ(mkfifo(name(1).c_str(), 0600), 0); },
      [&] { ASSERT_EQ(mkfifo(copies().current_file(path()).c_str(), 0600), 0); },
      [&] { ASSERT_EQ(g_mkdir(name(1).c_str(), 0700), 0); },
      [&] { put(name(1), "damaged"); },
      [&] { put(name(1), KeptText{.time = in_year(10000)}.bytes()); },
      [&] { put(name(1), KeptText{.time = -1}.bytes()); },
  };
  for (const auto& oddity : oddities) {
    oddity();
    start_again(path());
    EXPECT_TRUE(says("A recovery copy was found, but it is damaged")) << get_status();
    EXPECT_TRUE(copy->offered().empty());
    kill();
    start_again(path());
    EXPECT_EQ(get_status().raw(), "") << "told once";
    add_zone("Yard");
    settle();
    layout().save();
    settle();
    kill();
  }
}

TEST_F(RecoveryTest, uses_no_folder_of_somebody_else) {
  if (geteuid() != 0) GTEST_SKIP() << "nothing can be given away";
  save();
  settle();
  kill();
  const auto recovery = folder.file("recovery");
  g_mkdir(recovery.c_str(), 0700);
  ASSERT_EQ(chown(recovery.c_str(), 12345, 12345), 0);
  start_again(path());
  add_zone("Yard");
  settle();
  EXPECT_TRUE(says("belongs to somebody else")) << get_status();
  EXPECT_EQ(Glib::Dir(recovery).read_name(), "");
}

TEST_F(RecoveryTest, is_for_the_eyes_of_its_owner) {
  add_zone("Quay");
  save();
  save();  // over what is there, which is kept
  add_zone("Yard");
  settle();
  kill();
  const auto recovery = folder.file("recovery");
  struct stat info {};
  ASSERT_EQ(stat(recovery.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
  int files = 0;
  for (const auto& name : Glib::Dir(recovery)) {
    ASSERT_EQ(stat(Glib::build_filename(recovery, name).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u) << name;
    ++files;
  }
  EXPECT_EQ(files, 2);
}

TEST_F(RecoveryTest, goes_on_when_no_copy_can_be_written) {
  kill();
  folder.write("recovery", "a file where the folder should be");
  begin();
  add_zone("Quay");
  const auto wait_for_status = [this](bool any) {
    for (int wait = 0; wait < 1000 && get_status().empty() == any; ++wait) {
      settle();
      g_usleep(1000);  // the disk has a time of its own
    }
  };
  wait_for_status(true);
  EXPECT_TRUE(says("The recovery copy could not be written")) << get_status();
  // It is tried again, though nothing changes any more.
  g_unlink(folder.file("recovery").c_str());
  wait_for_status(false);
  EXPECT_EQ(get_status().raw(), "") << "it has been written after all";
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

TEST_F(RecoveryTest, keeps_a_large_document_at_once_when_the_end_is_forced) {
  save();
  settle();
  fill(10000);
  copy->finish(RecoveryCopy::End::forced);
  const auto document = DocumentText::whole();
  make_file_newer();  // in vain
  copy.reset();
  start_again(path());
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  open_newest();
  EXPECT_EQ(DocumentText::whole(), document);
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
      const auto written = RecoveryFolder::read(
          RecoveryFolder(folder.file("recovery")).current_file(layout().get_path()));
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

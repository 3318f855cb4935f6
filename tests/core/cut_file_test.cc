#include <glibmm/fileutils.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/document_text.h"
#include "core/file_bytes.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "tests/support/recovery_fixture.h"

namespace zemblar::test {
namespace {

/// A layout that a file cannot hold, and what becomes of it beside its cut file.
class CutFileTest : public RecoveryTest {
 protected:
  CutFileTest() {
    save();
    whole_file = bytes_of(path());
    add_zone("Quay");
    layout().get_devices().add(new ECoS)->set_name("Station");
    layout().get_loks().add(new Lok)->set_name("Locomotive");
    layout().get_loks().add(new LokGroup)->set_name("Freight");
    layout().save();
    document = DocumentText::whole();
  }
  [[nodiscard]] std::string complete() { return path() + ".complete"; }
  static bool has(const std::string& path) { return Glib::file_test(path, Glib::FILE_TEST_EXISTS); }

  std::string whole_file;  // of the empty layout that was there before
  std::string document;
};

TEST_F(CutFileTest, is_opened_again_with_all_that_it_cannot_hold) {
  EXPECT_EQ(get_status().raw(),
            "Saved harbour.zblt. A layout file cannot hold “Freight”: the whole layout is in "
            "harbour.zblt.complete, keep both together.");
  const auto cut = bytes_of(path());
  settle();
  quit();
  start_again(path());
  EXPECT_TRUE(says("Opened harbour.zblt.complete")) << get_status();
  EXPECT_FALSE(says("Unsaved")) << get_status();
  EXPECT_EQ(DocumentText::whole(), document);
  EXPECT_EQ(layout().get_path(), path());
  EXPECT_TRUE(copy->offered().empty());
  layout().save();
  EXPECT_EQ(bytes_of(path()), cut);

  add_zone("Yard");
  settle();
  kill();
  start_again(path());
  EXPECT_TRUE(says("Unsaved work on harbour.zblt was found")) << get_status();
  open_newest();
  EXPECT_EQ(zones(), "Quay Yard");

  layout().get_devices().destroy_children();
  layout().get_loks().destroy_children();
  layout().save();
  EXPECT_EQ(get_status(), "Saved harbour.zblt");
  EXPECT_FALSE(has(complete()));
}

TEST_F(CutFileTest, belongs_to_its_complete_one_wherever_both_are) {
  const auto cut = bytes_of(path());
  const auto other = folder.file("other");
  ASSERT_EQ(g_mkdir(other.c_str(), 0700), 0);
  Glib::file_set_contents(other + "/yard.zblt", cut);
  Glib::file_set_contents(other + "/yard.zblt.complete", bytes_of(complete()));
  layout().new_document(true);
  ASSERT_TRUE(Layout::open(other + "/yard.zblt")) << get_status();
  EXPECT_EQ(DocumentText::whole(), document);

  // As a kill between the two writes leaves it.
  ASSERT_TRUE(Layout::open(path()));
  (*layout().get_loks().begin())->set_name("Shunter");
  layout().save();
  ASSERT_NE(bytes_of(path()), cut);
  Glib::file_set_contents(path(), cut);
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_EQ((*layout().get_loks().begin())->get_name(), "Shunter");

  chmod(path().c_str(), 0440);
  unlink(complete().c_str());
  layout().save();
  struct stat info {};
  ASSERT_EQ(stat(complete().c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u) << "its owner can always write it";
}

TEST_F(CutFileTest, is_kept_when_a_whole_file_stands_in_its_place) {
  const auto whole_complete = bytes_of(complete());
  for (const bool is_start : {true, false}) {
    kill();
    Glib::file_set_contents(path(), whole_file);
    Glib::file_set_contents(complete(), whole_complete);
    if (is_start) {
      start_again(path());
    } else {
      start_again({});
      ASSERT_TRUE(Layout::open(path()));
    }
    EXPECT_TRUE(says("harbour.zblt.complete was made for another version")) << get_status();
    add_zone("Yard");
    layout().save();
    EXPECT_FALSE(has(complete()));
    ASSERT_EQ(copy->offered().size(), 1u) << "kept once";
  }
  open_newest();
  EXPECT_EQ(DocumentText::whole(), document);

  kill();
  Glib::file_set_contents(path(), whole_file);
  Glib::file_set_contents(complete(), whole_complete);
  ASSERT_TRUE(Layout::open(path()));
  layout().save();
  EXPECT_EQ(bytes_of(complete()), whole_complete) << "with nobody to keep it";
  begin();
}

TEST_F(CutFileTest, is_offered_as_it_was_before_somebody_was_stopped_while_writing_into_it) {
  const auto copies = Glib::build_filename(Glib::get_user_data_dir(), "zemblar", "saved-copies");
  const auto whole_complete = bytes_of(complete());
  g_mkdir_with_parents(copies.c_str(), 0700);
  kill();
  Glib::file_set_contents(
      Glib::build_filename(copies, digest_of(complete()).substr(0, 32) + ".zblt"), whole_complete);
  Glib::file_set_contents(complete(), whole_complete.substr(0, 200));
  start_again(path());
  EXPECT_TRUE(says("harbour.zblt.complete may not have been written to its end")) << get_status();
  open_newest();
  EXPECT_EQ(DocumentText::whole(), document);
}

TEST_F(CutFileTest, that_was_edited_leads_to_the_complete_one_among_the_entries) {
  auto cut = bytes_of(path());
  cut.replace(cut.find("New Layout"), 10, "Harbour");
  quit();
  Glib::file_set_contents(path(), cut);
  for (int start = 0; start < 2; ++start) {
    if (copy) kill();
    start_again(path());
    EXPECT_TRUE(says("Couldn't open")) << get_status();
    EXPECT_TRUE(says("harbour.zblt.complete was made for another version")) << get_status();
    ASSERT_EQ(copy->offered().size(), 1u);
  }
  open_newest();
  EXPECT_EQ(DocumentText::whole(), document);
  EXPECT_FALSE(layout().get_file());
  auto aside = complete();
  for (const auto& damaged : {std::string(), bytes_of(complete()).substr(0, 150)}) {
    aside += ".damaged";
    Glib::file_set_contents(complete(), damaged);
    EXPECT_FALSE(Layout::open(path()));
    EXPECT_TRUE(says("harbour.zblt.complete cannot be read either")) << get_status();
    layout().save_to(Glib::filename_to_uri(path()), true);
    EXPECT_EQ(bytes_of(aside), damaged);
    EXPECT_TRUE(says("harbour.zblt.complete was damaged, and is kept as")) << get_status();
    Glib::file_set_contents(path(), cut);
  }
}

TEST_F(CutFileTest, keeps_what_somebody_else_has_written_into_the_complete_one) {
  auto theirs = bytes_of(complete());
  theirs.replace(theirs.find("Station"), 7, "STATION");
  Glib::file_set_contents(complete(), theirs);
  layout().save();
  EXPECT_TRUE(says("Somebody else had changed it")) << get_status();
  ASSERT_EQ(copy->offered().size(), 1u);
  layout().save();
  EXPECT_EQ(copy->offered().size(), 1u);
}

TEST_F(CutFileTest, finds_its_pictures_in_a_folder_that_was_moved) {
  const auto house = folder.file("house");
  const auto moved = folder.file("moved");
  ASSERT_EQ(g_mkdir(house.c_str(), 0700), 0);
  Glib::file_set_contents(house + "/go.svg", "");
  auto* function = new Function(dynamic_cast<Lok*>(*layout().get_loks().begin()));
  (*layout().get_loks().begin())->add(function);
  layout().save_to(Glib::filename_to_uri(house + "/yard.zblt"), true);
  function->set_on_image("go.svg");
  layout().save();
  ASSERT_EQ(g_rename(house.c_str(), moved.c_str()), 0);
  ASSERT_TRUE(Layout::open(moved + "/yard.zblt")) << get_status();
  auto* lok = dynamic_cast<Lok*>(*layout().get_loks().begin());
  EXPECT_EQ(dynamic_cast<Function&>(**lok->begin()).on_picture().file(), moved + "/go.svg");
}

}  // namespace
}  // namespace zemblar::test

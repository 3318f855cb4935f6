#include "core/layout.h"

#include <glibmm/convert.h>
#include <locale.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include "core/global_options.h"
#include "core/safe_write.h"
#include "core/yaml_io.h"
#include "locomotives/lok.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {
namespace {

/// What a document class does at the least, with a reference.
class Sign : public Object {
 public:
  Sign() : Glib::ObjectBase("Sign"), Object("Sign %1") {}
  explicit Sign(const YAML::Node& node) : Sign() {
    load_identity(node);
    if (const auto key = node["partner"]) key >> partner;
    if (node["inconsistent"]) Layout::get().signal_post_resolve().connect([] { return false; });
    Layout::get().signal_post_resolve().connect([this] {
      resolved_before_post = !partner || partner->get_parent();
      return true;
    });
  }
  void save(YAML::Emitter& out) const override {
    out << YAML::LocalTag("sign") << YAML::BeginMap;
    save_identity(out);
    out << YAML::Key << "partner" << YAML::Value << static_cast<const Object*>(partner);
    out << YAML::EndMap;
  }
  Sign* partner = nullptr;
  bool resolved_before_post = false;
};

/// `text` `times` times.
std::string repeated(const std::string& text, unsigned times) {
  std::string all;
  for (unsigned i = 0; i < times; ++i) all += text;
  return all;
}

/// Buses on buses by aliases: `width` to the power of `depth` of them.
std::string buses_of_aliases(unsigned width, unsigned depth) {
  std::string text = "parts:\n  - &b0 !device/Tessara/BUS {address: 1}\n";
  for (unsigned i = 1; i <= depth; ++i) {
    text += "  - &b" + std::to_string(i) + " !device/Tessara/BUS {address: 1, devices: [" +
            repeated("*b" + std::to_string(i - 1) + ", ", width) + "]}\n";
  }
  return text + "objects: [!device/Tessara/BUS {devices: [*b" + std::to_string(depth) + "]}]\n";
}

const DocumentClass::Registration registration(document_class<Sign>("!sign", Section::scripts));

class LayoutFile : public LayoutTest {
 protected:
  std::string with_objects(const std::string& objects) {
    return folder.write("layout.zblt", "%YAML 1.2\ntitle: T\nobjects:\n" + objects);
  }
  Sign* sign(unsigned n) { return dynamic_cast<Sign*>(layout().get_scripts().child_at(n)); }
  std::string path() { return folder.file("layout.zblt"); }
};

TEST_F(LayoutFile, opens_what_it_has_saved_to_identical_bytes) {
  auto* first = layout().get_scripts().add(new Sign);
  auto* second = layout().get_scripts().add(new Sign);
  first->partner = second;
  second->set_name("quotes \" and: colons # and ünïcode");
  layout().set_name("Title");
  layout().save_to(Glib::filename_to_uri(path()), true);
  const auto bytes = bytes_of(path());
  EXPECT_TRUE(
      bytes.starts_with("%YAML 1.2\ntitle: Title\nobjects:\n  - !sign\n    name: Sign 1\n"
                        "    id: 0\n    partner: 1\n  - !sign\n"))
      << bytes;
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_EQ(sign(0)->partner, sign(1));
  EXPECT_TRUE(sign(0)->resolved_before_post);
  layout().save();
  EXPECT_EQ(bytes_of(path()), bytes);
}

TEST_F(LayoutFile, resolves_references_that_point_ahead_behind_or_nowhere) {
  with_objects(
      "- !sign {id: 7, partner: 9}\n- !sign {id: 9, partner: 7}\n- !sign {partner: 1000}\n"
      "- !sign {partner: ~}\n- !sign {}\n");
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_EQ(sign(0)->partner, sign(1));
  EXPECT_EQ(sign(1)->partner, sign(0));
  EXPECT_EQ(sign(2)->partner, nullptr);
  EXPECT_EQ(layout().get_scripts().child_count(), 5u);
  EXPECT_EQ(layout().find_id(7), nullptr) << "numbers have no meaning after the load";
}

TEST_F(LayoutFile, that_cannot_be_opened_is_told_and_leaves_the_document_alone) {
  const struct {
    std::string bytes;
    const char* problem;
  } cases[] = {
      {"", "Empty File"},
      {"# a comment\n", "Empty File"},
      {"title: [\n", "yaml-cpp: error at line"},
      {"objects:\n  - !lok-group {name: G}\n", "Unimplemented Load: !lok-group"},
      {"objects:\n  - {name: G}\n", "Unimplemented Load: ?"},
      {"objects:\n  - !sign {id: 1}\n  - !sign {id: 1}\n", "Duplicate Object IDs found"},
      {"objects:\n  - !sign {id: x}\n", "invalid scalar"},
      {"objects:\n  - !sign {id: -1}\n", "invalid scalar"},
      {"objects:\n  - !sign {partner: [1]}\n", "invalid scalar"},
      {"objects:\n  - !sign {name: ~}\n", "invalid scalar"},
      {"title: {}\n", "invalid scalar"},
      {"objects: {a: b}\n", ""},
      {"objects:\n  - !sign\n", ""},
      {"objects:\n  - !sign {inconsistent: 1, partner: 5}\n", "Post Resolve Failure"},
      {"x: &b !device/Tessara/BUS {address: 1, devices: [*b]}\n"
       "objects: [!device/Tessara/BUS {devices: [*b]}]\n",
       "line 1, column 50: An entry contains itself"},
      {"objects: &o\n  - !sign {partner: *o}\n", "An entry contains itself"},
      {"&r {title: *r}\n", "An entry contains itself"},
      {"x: " + repeated("[", 490) + repeated("]", 490), "Entries are nested too deeply"},
      {"x: &a " + repeated("[", 300) + repeated("]", 300) + "\ny: " + repeated("[", 200) + "*a" +
           repeated("]", 200),
       "Entries are nested too deeply"},
      {buses_of_aliases(8, 20), "Its aliases stand for more than"},
  };
  auto* const before = &layout();
  auto* kept = layout().get_scripts().add(new Sign);
  int replaced = 0;
  const ScopedConnection watch(Layout::signal_replaced().connect([&] { ++replaced; }));
  GlobalOptions::get().set_layout("/remembered.zblt");
  for (const auto& one : cases) {
    folder.write("layout.zblt", one.bytes);
    EXPECT_FALSE(Layout::open(path())) << one.bytes;
    const auto status = get_status().raw();
    EXPECT_TRUE(status.starts_with("Couldn't open " + path() + ": ")) << status;
    EXPECT_NE(status.find(one.problem), std::string::npos) << status << " for " << one.problem;
    EXPECT_EQ(&Layout::get(), before);
    EXPECT_EQ(sign(0), kept);
    EXPECT_FALSE(layout().get_file());
  }
  for (const auto& no_file : {folder.path(), folder.file("missing.zblt")}) {
    EXPECT_FALSE(Layout::open(no_file));
    EXPECT_TRUE(get_status().raw().ends_with("Empty File")) << get_status();
  }
  EXPECT_EQ(replaced, 0);
  EXPECT_EQ(GlobalOptions::get().get_layout(), "/remembered.zblt");
}

TEST_F(LayoutFile, options_outlive_the_program_and_a_damaged_one_leaves_the_others) {
  auto& options = GlobalOptions::get();
  const auto file = Glib::get_user_config_dir() + "/zemblar/options.ini";
  options.set_points_protected(true);
  const auto kept = bytes_of(file);
  for (const auto& text :
       {kept, std::string("[zemblar]\npoints-protected=true\n"),
        std::string("[zemblar]\nlayout=%\ntrains-go-on=perhaps\npoints-protected=true\n")}) {
    options.set_points_protected(false);
    options.set_grid(20);
    Glib::file_set_contents(file, text + "grid=30\n");
    options.load();
    EXPECT_TRUE(options.get_points_protected()) << text;
    EXPECT_EQ(options.get_grid(), 30u) << text;
  }
  options.set_points_protected(false);
  options.set_grid(GlobalOptions::usual_grid);
}

TEST_F(LayoutFile, has_the_same_bytes_where_numbers_have_commas) {
  const std::string before = setlocale(LC_ALL, nullptr);
  if (!setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "there is no such locale here";
  const std::string lok =
      "%YAML 1.2\ntitle: T\nobjects:\n  - !lok\n    name: L\n    id: 0\n    top-speed: 1000\n"
      "    decoders:\n      - type: DCC 28\n        device: ~\n        address: 9999\n"
      "        speed: 0.5\n    functions:\n      []\n";
  folder.write("layout.zblt", lok);
  EXPECT_TRUE(Layout::open(path())) << get_status();
  layout().save();
  EXPECT_EQ(bytes_of(path()), lok);
  folder.write("layout.zblt", "objects: [!lok {decoders: [{speed: '0,5'}]}]\n");
  EXPECT_FALSE(Layout::open(path()));
  setlocale(LC_ALL, before.c_str());
}

TEST_F(LayoutFile, may_hold_little_or_nothing) {
  for (const auto* bytes : {"~\n", "just a scalar\n", "[1, 2]\n", "other: key\n"}) {
    folder.write("layout.zblt", bytes);
    ASSERT_TRUE(Layout::open(path())) << bytes << get_status();
    EXPECT_EQ(layout().get_name(), "New Layout");
    EXPECT_EQ(layout().child_count(), 6u);
    EXPECT_TRUE(layout().get_views().empty());
  }
  folder.write("layout.zblt", "\xef\xbb\xbf%YAML 1.2\r\ntitle: Dos\r\nobjects:\r\n");
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_EQ(layout().get_name(), "Dos");
  EXPECT_EQ(layout().get_path(), path());
}

TEST_F(LayoutFile, may_name_parts_again_and_have_its_keys_in_any_order) {
  folder.write("layout.zblt",
               "common: {decoders: &d [{type: DCC 28}]}\n? [odd, key]\n: ~\n"
               "objects:\n  - !lok {decoders: *d}\n  - &again !lok {decoders: *d, name: &n Ae}\n"
               "  - *again\ntitle: *n\ntitle: later\nobjects: ~\n---\ntitle: [\n");
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_EQ(layout().get_name(), "Ae");
  ASSERT_EQ(layout().get_loks().child_count(), 3u);
  for (auto* child : layout().get_loks()) {
    const auto& lok = dynamic_cast<Lok&>(*child);
    EXPECT_EQ(lok.get_decoders().at(0)->get_type(), DecoderType::dcc28) << lok.get_name();
  }
  folder.write("layout.zblt", "objects: &o\n  - !sign {}\n  - !sign {}\n");
  ASSERT_TRUE(Layout::open(path())) << get_status();
  EXPECT_TRUE(sign(1)) << "a list with an anchor";
}

TEST_F(LayoutFile, may_leave_out_what_has_a_default) {
  folder.write("layout.zblt",
               "objects:\n  - !device/Lenz/LI-USB {}\n  - !device/Tessara/BUS {"
               "devices: [!device/Tessara/QVRN {name: Reader}, !device/Tessara/BUS {}]}\n");
  ASSERT_TRUE(Layout::open(path())) << get_status();
  const auto text = layout().serialize();
  EXPECT_NE(text.find("use-as-default: true"), std::string::npos) << text;
  EXPECT_NE(text.find("name: Reader\n        id: 2\n        address: 0"), std::string::npos)
      << text;
}

TEST_F(LayoutFile, takes_its_extension_from_the_filter) {
  const auto uri = [&](const char* name) { return Glib::filename_to_uri(folder.file(name)); };
  layout().save_to(uri("plain"), true);
  EXPECT_EQ(layout().get_path(), folder.file("plain.zblt"));
  EXPECT_EQ(GlobalOptions::get().get_layout(), folder.file("plain.zblt"));
  layout().save_to(uri("SHOUT.ZBLT"), true);
  EXPECT_EQ(layout().get_path(), folder.file("SHOUT.ZBLT"));
  layout().save_to(uri("any.txt"), false);
  EXPECT_EQ(layout().get_path(), folder.file("any.txt"));
}

TEST_F(LayoutFile, that_was_saved_is_told_without_hiding_a_warning) {
  VirtualClock clock;
  layout().save_to(Glib::filename_to_uri(path()), true);
  Layout::dialogs().finish_edits = [] { set_status("The name “Quay” is taken."); };
  layout().save();
  EXPECT_EQ(get_status().raw(), "Saved layout.zblt. The name “Quay” is taken.");
  Layout::dialogs().finish_edits = {};
  StatusNote trouble;
  trouble.show("The station does not answer.");
  set_status("Something else.");
  layout().save();
  EXPECT_EQ(get_status().raw(), "Saved layout.zblt");
  clock.advance(std::chrono::seconds(10));
  EXPECT_EQ(get_status().raw(), "The station does not answer.");
}

TEST_F(LayoutFile, is_followed_by_those_who_watch_the_current_layout) {
  with_objects("- !sign {name: opened}\n");
  auto* const old = &layout();
  std::string seen;
  old->signal_deleted().connect([&] { seen = sign(0)->get_name(); });
  bool replaced = false;
  const ScopedConnection watch(Layout::signal_replaced().connect([&] { replaced = true; }));
  ASSERT_TRUE(Layout::open(path()));
  EXPECT_EQ(seen, "opened") << "the new document is complete when the old one goes";
  EXPECT_TRUE(replaced);
  EXPECT_NE(&layout(), old);

  auto* const same = &layout();
  layout().new_document(true);
  EXPECT_EQ(&layout(), same);
  EXPECT_EQ(layout().get_name(), "New Layout");
  EXPECT_FALSE(layout().get_file());
}

TEST_F(LayoutFile, runs_every_slot_after_reading_though_one_has_failed) {
  int ran = 0;
  layout().signal_post_resolve().connect([&] { return ++ran == 0; });
  layout().signal_post_resolve().connect([&] { return ++ran > 0; });
  EXPECT_FALSE(layout().signal_post_resolve().emit());
  EXPECT_EQ(ran, 2);
  layout().signal_post_resolve().clear();
}

TEST(LayoutPulse, beats_twice_a_second_until_the_layout_ends) {
  VirtualClock clock;
  int beats = 0;
  auto& layout = Layout::get(new Layout);
  layout.signal_pulse().connect([&] { ++beats; });
  clock.advance(std::chrono::milliseconds(1499));
  EXPECT_EQ(beats, 2);
  layout.destroy();
  clock.advance(std::chrono::seconds(2));
  EXPECT_EQ(beats, 2);
}

class SafeWrite : public testing::Test {
 protected:
  SafeWrite() { folder.write("file", old_bytes); }
  const std::string old_bytes = "the only copy of a year of evenings\n";
  const std::string new_bytes = std::string(100'000, 'x');
  TemporaryFolder folder;

  static std::string save(const std::string& path, const std::string& bytes) try {
    write_safely(Gio::File::create_for_path(path), bytes);
    return {};
  } catch (const Gio::Error& error) {
    return error.what();
  }
  [[nodiscard]] unsigned file_count() const {
    Glib::Dir listing(folder.path());
    return static_cast<unsigned>(std::distance(listing.begin(), listing.end()));
  }
  /// Saves twice in a process that cannot write that much, as on a full disk. Whether the message
  /// ends so, and the folder is as it was before.
  [[noreturn]] void exit_when_full(const std::string& path, const char* remains) const {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &small);
    Glib::setenv("XDG_DATA_HOME", folder.file("data"));
    const auto files = file_count();
    save(path, new_bytes);
    const auto problem = save(path, new_bytes);  // somebody tries again
    fprintf(stderr, "%s\n", problem.c_str());
    const bool told = problem.starts_with("Couldn't save") && problem.ends_with(remains);
    const bool clean = file_count() == files + 1 && copy_of_overwritten(path).empty();
    _exit(told && clean && bytes_of(folder.file("file")) == old_bytes ? 0 : 1);
  }
};

TEST_F(SafeWrite, that_fails_leaves_what_was_there_and_nothing_else) {
  const auto file = folder.file("file");
  ASSERT_EQ(symlink(file.c_str(), folder.file("link").c_str()), 0);
  const auto* as_before = "The file is as it was before.";
  const auto well = testing::ExitedWithCode(0);
  EXPECT_EXIT(exit_when_full(file, as_before), well, "");
  EXPECT_EXIT(exit_when_full(folder.file("link"), as_before), well, "");
  EXPECT_EXIT(exit_when_full(folder.file("new"), "Nothing has been written."), well, "");
  ASSERT_EQ(link(file.c_str(), folder.file("twin").c_str()), 0);
  EXPECT_EXIT(exit_when_full(file, as_before), well, "");
  EXPECT_NE(save(folder.file("no/such/folder/file"), new_bytes), "");
  EXPECT_NE(save(folder.path(), new_bytes), "") << "a folder";
}

TEST_F(SafeWrite, keeps_links_and_permissions_and_leaves_nothing_behind) {
  const auto file = folder.file("file");
  const auto mode_of = [](const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
  };
  ASSERT_EQ(symlink("file", folder.file("link").c_str()), 0);
  ASSERT_EQ(chmod(file.c_str(), 0664), 0);
  EXPECT_EQ(save(folder.file("link"), "through a link"), "");
  EXPECT_EQ(bytes_of(file), "through a link");
  EXPECT_EQ(mode_of(file), 0664u);
  struct stat info {};
  ASSERT_EQ(lstat(folder.file("link").c_str(), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  ASSERT_EQ(link(file.c_str(), folder.file("twin").c_str()), 0);
  EXPECT_EQ(save(file, "to both names"), "");
  EXPECT_EQ(bytes_of(folder.file("twin")), "to both names");
  write_safely(Gio::File::create_for_path(folder.file("private")), "x", 0600);
  EXPECT_EQ(mode_of(folder.file("private")), 0600u);
  EXPECT_EQ(file_count(), 4u);
  EXPECT_EQ(copy_of_overwritten(file), "");
}

}  // namespace
}  // namespace zemblar::test

#include "diagram/view.h"

#include <gdkmm/pixbuf.h>
#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <cstdlib>

#include "core/document_text.h"
#include "core/layout.h"
#include "core/status.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "track/signal.h"

namespace zemblar {
namespace {

/// As in a file that holds nothing else.
std::string written(const View& view) {
  Layout::get().new_document(false);
  EXPECT_FALSE(Layout::get().serialize().empty());  // numbers start afresh
  YAML::Emitter out;
  view.save(out);
  return out.c_str();
}

/// A picture in a file that ends with the scope.
struct Picture {
  Picture(int width, int height)
      : path(Glib::build_filename(Glib::get_tmp_dir(), "zemblar-view-test.png")) {
    Gdk::Pixbuf::create(Gdk::COLORSPACE_RGB, false, 8, width, height)->save(path, "png");
  }
  ~Picture() { g_unlink(path.c_str()); }
  std::string path;
};

TEST(View, is_written_and_read_back) {
  View view;
  EXPECT_EQ(written(view),
            "!view\nname: View 1\nid: 0\ncolour: \"#ffffff\"\nimage: \"\"\nhidden: false");
  view.set_name("Yard");
  view.set_colour(Gdk::Color("#01ab80"));
  view.set_hidden(true);
  view.set_width(300);
  const auto text = written(view);
  const View read(YAML::Load(text));
  EXPECT_EQ(written(read), text);
  EXPECT_EQ(read.get_colour(), Gdk::Color("#01ab80"));
  EXPECT_EQ(View(YAML::Load("colour: octarine")).get_colour(), Gdk::Color("white"));
  EXPECT_EQ(read.get_width(), 0);  // a file holds no table size
}

TEST(View, refuses_what_a_file_may_not_say) {
  struct {
    const char* text;
    const char* message;
  } const cases[] = {
      {"colour: [1]", "invalid scalar"},
      {"hidden: perhaps", "invalid scalar"},
      {"objects: [!view-tunnel {}]", "Unimplemented Load: !view-tunnel"},
  };
  for (const auto& one : cases) {
    try {
      const View view(YAML::Load(one.text));
      ADD_FAILURE() << one.text;
    } catch (const YAML::Exception& error) {
      EXPECT_NE(std::string(error.what()).find(one.message), std::string::npos) << error.what();
    }
  }
}

TEST(View, grows_its_table_to_hold_the_background_image) {
  const Picture picture(40, 30);
  View view;
  int widths = 0;
  int images = 0;
  view.property_width().signal_changed().connect([&] { ++widths; });
  view.signal_image_changed().connect([&] { ++images; });
  view.set_height(100);
  view.set_image(picture.path);
  EXPECT_EQ(view.get_width(), 40);
  EXPECT_EQ(view.get_height(), 100);
  EXPECT_EQ(widths, 1);
  view.set_image({});
  EXPECT_EQ(images, 2);
  EXPECT_EQ(view.get_width(), 40);
}

TEST(View, finds_the_image_beside_the_layout_file_or_names_it_and_leaves_it_empty) {
  const Picture picture(40, 30);
  const auto folder = Glib::path_get_dirname(picture.path);
  const auto layout = Glib::build_filename(folder, "zemblar-view-test.zblt");
  const auto open = [&](const std::string& image) {
    Glib::file_set_contents(layout,
                            "objects:\n  - !view\n    name: Station\n    image: " + image + "\n");
    EXPECT_TRUE(Layout::open(layout)) << get_status();
    return Layout::get().serialize();
  };
  for (const auto* path : {"zemblar-view-test.png", "/old/house/zemblar-view-test.png"})
    EXPECT_NE(open(path).find(std::string("image: ") + path), std::string::npos);
  clear_status();
  EXPECT_NE(open("/old/house/zemblar-view-test-gone.png").find("image: \"\""), std::string::npos);
  EXPECT_NE(get_status().raw().find("/old/house/zemblar-view-test-gone.png"), std::string::npos);
  g_unlink(layout.c_str());
}

TEST(PicturePath, means_the_same_picture_wherever_the_layout_goes) {
  const Picture picture(40, 30);
  const auto name = Glib::path_get_basename(picture.path);
  const auto top = Glib::path_get_dirname(picture.path) + "/zemblar-picture-test";
  for (const auto* folder : {"/a", "/b/c"}) g_mkdir_with_parents((top + folder).c_str(), 0700);
  const auto path = "../../" + name;
  std::string text = R"(objects:
  - !view {name: V, image: PATH}
  - !signal
    name: S
    outputs: [{type: Basic, device: ~, address: 1, output: 1}]
    states: [{name: Stop, id: 1, outputs: [{enabled: false}], image: PATH}]
  - !lok {name: L, functions: [{on_image: PATH}]}
)";
  for (auto at = text.find("PATH"); at != text.npos; at = text.find("PATH", at)) {
    text.replace(at, 4, path);
  }
  Glib::file_set_contents(top + "/a/one.zblt", text);
  const auto paths_with = [](const std::string& wanted) {
    const auto text = Layout::get().serialize();
    int count = 0;
    for (auto at = text.find(wanted); at != text.npos; at = text.find(wanted, at + 1)) ++count;
    return count;
  };
  const auto all_found = [&] {
    auto& layout = Layout::get();
    auto& view = dynamic_cast<View&>(**layout.get_views().begin());
    auto& signal = dynamic_cast<Signal&>(**layout.get_points().begin());
    auto& lok = dynamic_cast<Lok&>(**layout.get_loks().begin());
    const auto& state = dynamic_cast<SignalState&>(*signal.states()[0]);
    const auto& function = dynamic_cast<Function&>(**lok.begin());
    for (const auto& file :
         {view.image().file(), state.picture().file(), function.on_picture().file()})
      EXPECT_TRUE(Glib::file_test(file, Glib::FILE_TEST_EXISTS)) << file;
    EXPECT_EQ(view.image().width(), 40);
  };
  ASSERT_TRUE(Layout::open(top + "/a/one.zblt")) << get_status();
  all_found();
  EXPECT_EQ(paths_with("image: " + path + "\n"), 3) << "as the file had them";
  Layout::get().save_to(Glib::filename_to_uri(top + "/b/c/two.zblt"), true);
  all_found();
  ASSERT_TRUE(Layout::open(top + "/b/c/two.zblt")) << get_status();
  all_found();
  EXPECT_EQ(paths_with("image: ../" + path + "\n"), 3) << "from another folder";
  const auto kept = DocumentText::whole();
  const auto bytes = Layout::get().serialize();
  Layout::get().new_document(true);
  ASSERT_TRUE(Layout::open_copy(kept, true, "a copy")) << get_status();
  all_found();
  Layout::get().new_document(true);
  {
    const PicturePath::RelativeTo pictures(top + "/b/c/two.zblt");
    ASSERT_TRUE(Layout::open_copy(bytes, false, "another file's bytes")) << get_status();
  }
  all_found();

  ASSERT_EQ(0, ::symlink((top + "/b/c").c_str(), (top + "/link").c_str()));
  Layout::get().save_to(Glib::filename_to_uri(top + "/link/three.zblt"), true);
  ASSERT_TRUE(Layout::open(top + "/link/three.zblt")) << get_status();
  all_found();
  Layout::get().new_document(false);
  EXPECT_EQ(0, std::system(("rm -r " + top).c_str()));
}

}  // namespace
}  // namespace zemblar

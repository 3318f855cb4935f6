// Diagram objects: how they are written and read, joined, bent and drawn.

#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include <cstring>
#include <functional>
#include <random>
#include <sstream>

#include "core/toplevel.h"
#include "tests/diagram/diagram_scene.h"
#include "tests/track/link_names.h"

namespace zemblar::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class DiagramTest : public DiagramScene {
 protected:
  template <typename T>
  T& shown(unsigned index) {
    auto& opened = dynamic_cast<View&>(*layout().get_views().child_at(0));
    return dynamic_cast<T&>(*opened.get_objects().at(index).operator->());
  }
  /// The text as saved. Opened and saved again, it has to be the same.
  static std::string save_twice() {
    auto text = layout().serialize();
    EXPECT_TRUE(Layout::open_bytes("railway.zblt", text)) << get_status();
    EXPECT_EQ(layout().serialize(), text);
    return text;
  }
  /// The text of the layout with `from` replaced, opened.
  static bool open_with(const std::string& from, const std::string& to) {
    auto text = layout().serialize();
    const auto place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    text.replace(place, from.size(), to);
    return Layout::open_bytes("changed.zblt", text);
  }
  using Layout = zemblar::Layout;
};

// --- The file ---

TEST_F(DiagramTest, every_kind_comes_out_of_a_file_as_it_went_in) {
  auto* left = zone("West", false);
  auto* west = show<ViewZone>(*left, {0, 0});
  west->make_curved(west->segments()[0]);
  west->add_node(0);
  west->add_node(1);
  west->make_straight(west->segments()[2]);
  auto* points = show_point({100, 0});
  points->make_curved(points->segments()[1]);
  auto* scissors = show<ViewScissor>(*scissor(), {200, 0});
  scissors->make_curved(scissors->segments()[1]);
  auto* cross = show<ViewCrossing>(*crossing(), {300, 50});
  cross->make_curved(cross->segments()[0]);
  auto* aspect = show<ViewSignal>(*signal(), {0.125, -20});
  aspect->set_angle(22.5);
  aspect->set_anchor(Anchor::TopLeft);
  show<ViewLabel>(*left, {0, 40})->set_align(Anchor::TopRight);
  end(*points, "common").connect(end(*west, "right"));
  end(*scissors, "top-left").connect(end(*points, "state:Straight"));
  end(*cross, "top-left").connect(end(*scissors, "bottom-right"));
  cross->move_to_bottom();

  const auto first = save_twice();
  for (const auto* text : {"!view-zone", "link: [2, common]", "link: [1, right]", "top-left",
                           "straight: [tl-tr, bl-tr, bl-br]", "angle: 22.5", "anchor: Top Left",
                           "align: TOP RIGHT", "pos: [0.125, -20]"}) {
    EXPECT_THAT(first, HasSubstr(text));
  }
  auto& opened = shown<ViewZone>(1);
  EXPECT_EQ(opened.segments().size(), 3u);
  EXPECT_EQ(end(opened, "right").get_link(), &end(shown<ViewPoint>(2), "common"));
  EXPECT_EQ(end(opened, "right").pos, end(shown<ViewPoint>(2), "common").pos);
}

TEST_F(DiagramTest, what_cannot_be_joined_or_shown_does_not_keep_a_file_from_opening) {
  auto* first = zone("A", false);
  auto* a = show<ViewZone>(*first, {0, 0});
  auto* b = show_zone("B", {100, 0});
  show<ViewLabel>(*first, {0, 0});
  end(*b, "left").connect(end(*a, "right"));
  ASSERT_EQ(end(*a, "right").get_link(), &end(*b, "left"));
  for (const auto* to : {"link: [9, left]", "link: [-1, left]", "link: [99999999999, left]",
                         "link: [1, top-left]", "link: [2, left]", "link: [0, right]"}) {
    ASSERT_TRUE(open_with("link: [1, left]", to)) << to << get_status();
    EXPECT_EQ(shown<ViewZone>(0).get_view()->get_objects().size(), 3u);
    EXPECT_EQ(get_status(), "");
  }
  // The zone is there, the number is not: the label goes, and the file can be saved again.
  ASSERT_TRUE(open_with("!view-label\n        zone: 1", "!view-label\n        zone: 77"))
      << layout().serialize();
  EXPECT_EQ(shown<ViewZone>(0).get_view()->get_objects().size(), 2u);
  EXPECT_THAT(get_status(), HasSubstr("left out"));
  EXPECT_THAT(layout().serialize(), Not(HasSubstr("view-label")));
}

TEST_F(DiagramTest, what_was_changed_is_written_the_same_again_after_opening) {
  auto* a = show_zone("A", {0, 0});
  auto* b = show_zone("B", {100, 0});
  auto* c = show_zone("C", {200, 0});
  dynamic_cast<Point&>(*show_point({0, 100})->get_object()).add_state();
  end(*b, "left").connect(end(*a, "right"));
  end(*c, "left").connect(end(*b, "right"));
  end(*a, "left").drag(ViewNode::body, {-10, -70});
  const auto bend = [&](unsigned i) {
    shown<ViewZone>(i).make_curved(shown<ViewZone>(i).segments()[0]);
  };
  const auto drag = [&](const char* name, Vector to) {
    end(shown<ViewZone>(2), name).drag(ViewNode::body, to);
  };
  const std::vector<std::pair<const char*, std::function<void()>>> changes = {
      {"a straight end is joined to a bend", [&] { bend(1); }},
      {"and the other one bends", [&] { bend(0); }},
      {"the leg that leads the point is gone",
       [&] { shown<ViewPoint>(3).get_object()->child_at(0)->destroy(); }},
      {"far away",
       [&] {
         drag("right", {1e308, 1}), drag("left", {-1e308, 1});
       }},
  };
  for (const auto& [what, change] : changes) {
    SCOPED_TRACE(what);
    change();
    save_twice();
  }
}

TEST_F(DiagramTest, states_are_taken_from_a_file_in_any_order_and_each_once) {
  show_point({0, 0});
  const auto text = layout().serialize();
  const auto first = text.find("          2:");
  const auto second = text.find("          3:");
  const auto rest = text.find("  - !point", second);
  ASSERT_NE(rest, std::string::npos) << text;
  const auto one = text.substr(first, second - first);
  const auto two = text.substr(second, rest - second);
  const auto stranger = "          0:" + one.substr(one.find(':') + 1);
  const auto nobody = "          ~:" + one.substr(one.find(':') + 1);
  std::string in_order;
  for (const auto& states :
       {one + two, two + one, one + one, one + two + one, two, stranger + two, nobody + two}) {
    SCOPED_TRACE(states);
    ASSERT_TRUE(
        Layout::open_bytes("states.zblt", text.substr(0, first) + states + text.substr(rest)))
        << get_status();
    EXPECT_EQ(shown<ViewPoint>(0).segments().size(), 2u);
    const auto written = save_twice();
    if (states == one + two) in_order = written;
    if (states == two + one) {
      EXPECT_EQ(written, in_order) << "in the order of the point's states";
    }
  }
}

TEST_F(DiagramTest, refuses_what_a_file_may_not_say) {
  show_zone("A", {0, 0});
  show<ViewSignal>(*signal(), {0, 0});
  show<ViewScissor>(*scissor(), {0, 0});
  const auto text = layout().serialize();
  for (const auto& [from, to] :
       std::vector<std::pair<std::string, std::string>>{{"pos: [-40, 0]", "pos: [-40, 0, 1]"},
                                                        {"pos: [-40, 0]", "pos: [-40, .inf]"},
                                                        {"pos: [-40, 0]", "left: 4"},
                                                        {"        zone: 1\n", ""},
                                                        {"anchor: Centre", "anchor: Nowhere"},
                                                        {"angle: 0", "angle: wide"},
                                                        {"!view-zone", "!view-tunnel"},
                                                        {"straight: [", "bent: ["}}) {
    ASSERT_TRUE(Layout::open_bytes("good.zblt", text)) << get_status();
    EXPECT_FALSE(open_with(from, to)) << to;
    EXPECT_THAT(get_status(), HasSubstr("Couldn't open"));
  }
  EXPECT_THAT(get_status(), testing::ContainsRegex("at line .*straight"));
}

/// Random edits of a view with all kinds of track, and of its text.
class RandomTrack {
 public:
  RandomTrack(View& view, const std::vector<ViewTrack*>& tracks, unsigned seed)
      : view_(view), tracks_(tracks), random_(seed) {}

  void edit() {
    auto& track = *pick(tracks_);
    const auto segments = track.segments();
    const auto ends = ends_of(track);
    auto& end = *pick(ends);
    const Vector delta{static_cast<double>(below(400)) / 8 - 20, static_cast<double>(below(40))};
    const std::function<void()> deeds[] = {
        [&] { join(end, *pick(ends_of(*pick(tracks_)))); },
        [&] { join(end, *pick(ends_of(*pick(tracks_)))); },
        [&] { below(2) ? end.get_block_link()->disconnect() : end.disconnect(); },
        [&] { track.make_straight(pick(segments)); },
        [&] { track.make_curved(pick(segments)); },
        [&] { end.set_locked(below(2) != 0); },
        [&] { end.drag(static_cast<ViewNode::Part>(below(3)), end.pos + delta); },
        [&] { below(2) ? view_.move_to_top(&track) : view_.move_to_bottom(&track); },
        [&] { change_nodes(dynamic_cast<ViewZone*>(&track)); },
    };
    deeds[below(std::size(deeds))]();
  }
  /// With locks that no edit makes.
  std::string locked_by_hand(const std::string& text) {
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      result += line + '\n';
      const auto indent = line.find("pos: ");
      if (indent == std::string::npos || below(3)) continue;
      result += std::string(indent, ' ') + "locked: " + (below(2) ? "true" : "false") + '\n';
    }
    return result;
  }

 private:
  unsigned below(std::size_t count) { return static_cast<unsigned>(random_() % count); }
  template <typename T>
  T pick(const std::vector<T>& from) {
    return from.at(below(from.size()));
  }
  static std::vector<ViewLinkNode*> ends_of(ViewTrack& track) {
    std::vector<ViewLinkNode*> ends;
    for (const auto& name : link_names(dynamic_cast<Block&>(*track.get_object()))) {
      if (auto* end = track.get_link_node(name)) ends.push_back(end);
    }
    return ends;
  }
  void change_nodes(ViewZone* zone) {
    if (zone) below(3) ? zone->add_node(below(2)) : zone->delete_node(0);
  }
  static void join(ViewLinkNode& end, ViewLinkNode& other) {
    if (end.get_object() != other.get_object()) end.connect(other);
  }

  View& view_;
  std::vector<ViewTrack*> tracks_;
  std::mt19937 random_;
};

TEST_F(DiagramTest, is_written_the_same_again_however_it_was_drawn) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    layout().new_document(false);
    view = layout().get_views().add(new View);
    RandomTrack random(
        *view,
        {show_zone("A", {0, 0}), show_point({100, 0}), show<ViewScissor>(*scissor(), {200, 0}),
         show<ViewCrossing>(*crossing(), {300, 0}), show_zone("B", {0, 100}),
         show_point({100, 100})},
        seed);
    for (int i = 0; i < 80; ++i) random.edit();
    const auto text = save_twice();
    ASSERT_TRUE(Layout::open_bytes("hand.zblt", random.locked_by_hand(text)));
    save_twice();
    ASSERT_FALSE(HasFailure());
  }
}

// --- Nodes ---

TEST_F(DiagramTest, joining_nodes_joins_blocks_and_nothing_else_does) {
  auto* a = show_zone("A", {0, 0});
  auto* b = show_zone("B", {100, 0});
  auto* c = show_zone("C", {200, 0});
  auto& right = end(*a, "right");
  auto& left = end(*b, "left");
  auto& other = end(*c, "left");
  right.connect(left);
  EXPECT_EQ(right.get_block_link()->get_partner(), left.get_block_link());
  EXPECT_EQ(right.pos, left.pos);
  // Either end is taken now.
  right.connect(other);
  other.connect(left);
  EXPECT_EQ(right.get_link(), &left);
  EXPECT_EQ(other.get_link(), nullptr);
  EXPECT_FALSE(other.get_block_link()->is_connected());
  // They move together, until the blocks come apart.
  right.drag(ViewNode::body, {50, 60});
  EXPECT_EQ(left.pos, (Vector{50, 60}));
  left.get_block_link()->disconnect();
  EXPECT_EQ(right.get_link(), nullptr);
  EXPECT_EQ(left.get_link(), nullptr);
  // Apart on the picture only, they are joined again as they are.
  right.connect(left);
  right.disconnect();
  EXPECT_TRUE(left.get_block_link()->is_connected());
  right.connect(left);
  EXPECT_EQ(left.get_link(), &right);
  // What shows a block ends with it, and lets go of its partner.
  a->get_object()->destroy();
  EXPECT_EQ(view->get_objects().size(), 2u);
  EXPECT_EQ(left.get_link(), nullptr);

  EXPECT_THROW(left.set_block_link(other.get_block_link()), std::logic_error);
  EXPECT_THROW(left.set_object(c), std::logic_error);
  EXPECT_THROW(left.set_type(ViewLinkNode::outward), std::logic_error);
  left.set_type(ViewLinkNode::inward);
}

TEST_F(DiagramTest, nodes_take_their_direction_from_neighbours_and_partners) {
  auto* a = show_zone("A", {0, 0});
  auto* b = show_zone("B", {100, 0});
  auto& left = end(*a, "left");
  auto& right = end(*a, "right");
  EXPECT_EQ(right.dir, (Vector{1, 0}));
  right.drag(ViewNode::body, {-40, 80});
  EXPECT_EQ(left.dir, (Vector{0, 1}));
  EXPECT_EQ(right.dir, (Vector{0, 1}));
  // A curved end follows what it is joined to; of the same kind they face each other.
  b->make_curved(b->segments()[0]);
  end(*b, "left").connect(right);
  EXPECT_EQ(end(*b, "left").dir, right.dir);
  EXPECT_EQ(right.get_path_direction(), right.dir);
  end(*b, "right").connect(left);
  end(*b, "right").disconnect();
  end(*b, "left").disconnect();
  end(*b, "left").get_block_link()->disconnect();
  end(*b, "right").get_block_link()->disconnect();
  end(*b, "left").connect(left);
  EXPECT_EQ(end(*b, "left").dir, -left.dir);
  EXPECT_EQ(left.get_path_direction(), left.dir);

  // Handles: free, locked, and never too short.
  auto& node = end(*b, "right");
  node.drag(ViewNode::body, {140, 0});
  node.dir = {1, 0};
  node.drag(ViewNode::left_handle, node.pos + Vector{0, -30});
  EXPECT_EQ(node.dir, (Vector{0, 1}));
  EXPECT_EQ(node.left, 30);
  node.set_locked(true);
  node.drag(ViewNode::left_handle, node.pos + Vector{-50, -20});
  EXPECT_EQ(node.dir, (Vector{0, 1}));
  EXPECT_EQ(node.left, 20);
  node.drag(ViewNode::left_handle, node.pos);
  EXPECT_EQ(node.left, ViewNode::shortest_handle);
  b->make_straight(b->segments()[0]);
  EXPECT_TRUE(node.is_locked()) << "by its neighbour";
  b->make_curved(b->segments()[0]);
  EXPECT_FALSE(node.is_locked());
  const auto third = (node.pos - end(*b, "left").pos).length() / 3;
  EXPECT_DOUBLE_EQ(node.left, third);

  // One of two segments, straight and curved, that become one.
  b->add_node(0);
  b->make_straight(b->segments()[0]);
  b->delete_node(0);
  EXPECT_FALSE(*b->segments()[0].straight);
}

TEST_F(DiagramTest, every_straight_leg_of_a_point_sets_the_direction_of_its_end) {
  auto* points = show_point({0, 0});
  auto& common = end(*points, "common");
  auto& leg = end(*points, "state:Curved");
  const auto along_leg = [&] { return normalize(leg.pos - common.pos); };
  EXPECT_EQ(leg.dir, along_leg()) << "a new one";
  leg.drag(ViewNode::body, {30, 70});
  EXPECT_EQ(leg.dir, along_leg());
  common.drag(ViewNode::body, {-60, -40});
  EXPECT_EQ(leg.dir, along_leg());
  // The leg leads a bend that is joined to it, and no straight piece leads the leg.
  auto* bend = show_zone("Bend", {100, 0});
  bend->make_curved(bend->segments()[0]);
  end(*bend, "left").connect(leg);
  EXPECT_EQ(end(*bend, "left").dir, along_leg());
  leg.drag(ViewNode::body, {0, 90});
  EXPECT_EQ(end(*bend, "left").dir, along_leg());
  leg.get_block_link()->disconnect();
  end(*show_zone("Straight", {0, 200}), "left").connect(leg);
  leg.drag(ViewNode::body, {-30, 90});
  EXPECT_EQ(leg.dir, along_leg());
  points->make_curved(points->segments()[0]);
  points->make_straight(points->segments()[0]);
  EXPECT_EQ(leg.dir, along_leg()) << "it is the second one again";
  save_twice();
  EXPECT_EQ(end(shown<ViewPoint>(0), "state:Curved").dir, normalize({30, 130}));
}

/// A place of a curved segment, by its parameter from 0 to 1.
Vector place_on(const ViewSegment& segment, double t) {
  const double s = 1 - t;
  return segment.start->pos * (s * s * s) + segment.start->right_point() * (3 * s * s * t) +
         segment.end->left_point() * (3 * s * t * t) + segment.end->pos * (t * t * t);
}

TEST_F(DiagramTest, a_node_that_is_added_leaves_a_bend_its_shape) {
  struct Bend {
    const char* shape;
    Vector left_handle, right_handle;  // of ends at (-40, 0) and (40, 90)
  };
  for (const auto& [shape, left_handle, right_handle] :
       {Bend{"S", {60, 0}, {-60, 0}}, Bend{"S with long handles", {150, 10}, {-170, 20}},
        Bend{"C", {30, -80}, {90, 30}}, Bend{"loop", {200, 40}, {160, 60}}}) {
    auto* a = show_zone(shape, {0, 0});
    end(*a, "right").drag(ViewNode::body, {40, 90});
    a->make_curved(a->segments()[0]);
    end(*a, "left").drag(ViewNode::right_handle, Vector{-40, 0} + left_handle);
    end(*a, "right").drag(ViewNode::left_handle, Vector{40, 90} + right_handle);
    std::vector<Vector> before;
    for (int i = 0; i <= 40; ++i) before.push_back(place_on(a->segments()[0], i / 40.0));
    for (const int at : {20, 10}) {
      if (at == 20) {
        a->add_node(0);
      } else {
        a->add_node(0, before[10] + Vector{0.1, 0});
      }
      for (int i = 0; i <= 40; ++i) {
        const auto now = i <= at
                             ? place_on(a->segments()[0], static_cast<double>(i) / at)
                             : place_on(a->segments()[1], static_cast<double>(i - at) / (40 - at));
        EXPECT_LT((now - before[static_cast<std::size_t>(i)]).length(), 1e-9) << shape << i;
      }
      a->delete_node(0);
      end(*a, "left").drag(ViewNode::right_handle, Vector{-40, 0} + left_handle);
      end(*a, "right").drag(ViewNode::left_handle, Vector{40, 90} + right_handle);
    }
  }
}

// --- The picture ---

/// A picture of the railway as it is now, with the origin in the middle.
class Picture {
 public:
  explicit Picture(const View& view, double zoom = 1) {
    const auto context = Cairo::Context::create(surface_);
    context->set_source_rgb(0.5, 0.5, 1);
    context->paint();
    context->translate(size / 2, size / 2);
    context->scale(zoom, zoom);
    for (const auto& object : view.get_objects()) object->draw_runtime(context);
    surface_->flush();
  }
  [[nodiscard]] unsigned at(double x, double y) const {
    const auto* row =
        surface_->get_data() + (static_cast<int>(y) + size / 2) * surface_->get_stride();
    unsigned pixel = 0;
    std::memcpy(&pixel, row + (static_cast<int>(x) + size / 2) * 4, sizeof pixel);
    return pixel & 0xffffff;
  }

 private:
  static constexpr int size = 400;
  Cairo::RefPtr<Cairo::ImageSurface> surface_ =
      Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, size, size);
};
constexpr unsigned paper = 0x8080ff, white = 0xffffff, black = 0, green = 0x00ff00,
                   yellow = 0xffff00, grey = 0x808080;

TEST_F(DiagramTest, goes_on_painting_what_a_file_puts_far_away) {
  auto* a = show_zone("A", {0, 0});
  a->make_curved(a->segments()[0]);
  show<ViewSignal>(*signal(), {7, 0});
  show<ViewLabel>(*zone("B", false), {8, 0});
  show_zone("C", {0, 0});
  auto text = layout().serialize();
  for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {"pos: [-40, 0]", "pos: [1e308, -1e308]"},
           {"pos: [7, 0]", "pos: [1e308, 0]"},
           {"pos: [8, 0]", "pos: [1e308, -1e300]"},
           {"right: 26", "right: 1e308\n          x: 26"},
           {"angle: 0", "angle: 1e308"},
           {"dir: [1, 0]", "dir: [1e308, 1e308]"}}) {
    ASSERT_NE(text.find(from), std::string::npos) << from << text;
    text.replace(text.find(from), from.size(), to);
  }
  ASSERT_TRUE(Layout::open_bytes("far.zblt", text)) << get_status();
  view = dynamic_cast<View*>(layout().get_views().child_at(0));
  for (const double zoom : {1.0, 16.0}) EXPECT_EQ(Picture(*view, zoom).at(0, 0), black) << zoom;
}

TEST_F(DiagramTest, a_zone_shows_who_is_in_it_and_where_that_is_heading) {
  const auto zones = row({"A", "B"});
  auto* a = show<ViewZone>(*zones[0], {-40, 0});
  show<ViewZone>(*zones[1], {40, 0});
  end(*a, "left").drag(ViewNode::body, {-90, 0});
  EXPECT_EQ(Picture(*view).at(-70, 0), black);
  EXPECT_EQ(Picture(*view).at(-70, 3), white) << "the halo";
  EXPECT_EQ(Picture(*view).at(-70, 6), paper);
  at(zones[0]).occupy();
  const Picture unknown(*view);
  EXPECT_EQ(unknown.at(-70, 0), yellow);
  int sleepers = 0;
  for (int x = -70; x < -54; ++x) sleepers += unknown.at(x, 4) == black;
  EXPECT_EQ(sleepers, 4) << "one of two pixels each eight";
  int redrawn = 0;
  const ScopedConnection listening(
      view->signal_changed().connect([&] { redrawn += view->changed_object() == a; }));
  at(zones[0]).signal_changed().emit();
  EXPECT_EQ(redrawn, 0) << "nothing has changed";

  auto* lok = new_lok_in(zones[0]);
  EXPECT_GT(redrawn, 0);
  ASSERT_EQ(place(lok), "A.left..A.right");
  const Picture right(*view);
  EXPECT_EQ(right.at(-70, 0), green);
  // The tip of the arrow is narrow, its tail is wide.
  const double middle = -45;
  EXPECT_EQ(right.at(middle - 5, 4), black);
  EXPECT_NE(right.at(middle + 5, 4), black);
  lok->set_direction(Direction::Reverse);
  const Picture left(*view);
  EXPECT_EQ(left.at(middle + 5, 4), black);
  EXPECT_NE(left.at(middle - 5, 4), black);
  // It stands in the middle of the segments, or on the node that does.
  a->add_node(0);
  EXPECT_EQ(Picture(*view).at(middle + 5, 4), black);
  a->add_node(0);
  EXPECT_EQ(Picture(*view).at(-56.25 + 5, 4), black);
  EXPECT_EQ(Picture(*view).at(middle + 5, 4), paper);
  lok->orientation_known = false;
  lok->detected(&zones[0]->right, &zones[0]->left, false);
}

TEST(TravelArrow, points_along_a_bend_between_nodes) {
  std::array<ViewNode, 4> nodes;
  nodes[0].pos = {-90, 0};
  nodes[1].pos = {-40, 0};
  nodes[2].pos = {40, 0};
  nodes[3].pos = {90, 0};
  // From (-40, 0) over (0, -40) and (0, 40) to (40, 0).
  nodes[1].dir = normalize({40, -40});
  nodes[1].right = std::hypot(40, 40);
  nodes[2].dir = nodes[1].dir;
  nodes[2].left = nodes[1].right;
  const auto check = [](const TrackPath& path, const Vector& direction) {
    const auto middle = middle_of(path);
    EXPECT_LT(middle.pos.length(), 1e-9);
    EXPECT_LT((middle.dir - normalize(direction)).length(), 1e-9);
  };
  check({{&nodes[0]}, {&nodes[1], true}, {&nodes[2]}, {&nodes[3], true}}, {80, 80});
  check({{&nodes[1]}, {&nodes[2]}}, {0, 80});  // alone: from handle to handle
}

TEST_F(DiagramTest, a_point_shows_its_way_on_top_and_is_set_by_a_click) {
  auto* points = show_point({0, 0});
  auto* shown_point = dynamic_cast<Point*>(points->get_object());
  const auto states = shown_point->states();
  // Ways: along y = 0, and down to (25, 20); ticks at their ends.
  EXPECT_EQ(Picture(*view).at(15, 0), black);
  EXPECT_EQ(Picture(*view).at(15, 16), grey);
  EXPECT_EQ(Picture(*view).at(-25, 5), black) << "a tick";
  // Only the way that is not set has a halo, below the other one.
  EXPECT_EQ(Picture(*view).at(15, -3), paper);
  EXPECT_EQ(Picture(*view).at(15, 19), white);
  points->click(ViewSwitch::StateTag(points, states[1]), false);
  EXPECT_EQ(shown_point->get_state(), states[1]);
  EXPECT_EQ(Picture(*view).at(15, 0), grey);
  EXPECT_EQ(Picture(*view).at(15, 16), black);
  // States come and go, with their nodes.
  auto& third = shown_point->add_state();
  EXPECT_EQ(points->segments().size(), 3u);
  EXPECT_TRUE(points->get_link_node("state:" + third.get_name().raw()));
  third.destroy();
  EXPECT_EQ(points->segments().size(), 2u);
}

TEST_F(DiagramTest, a_signal_keeps_its_size_and_its_angle_at_any_zoom) {
  auto* aspect = show<ViewSignal>(*signal(), {10, 0});
  const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 10, 10);
  struct Case {
    Anchor anchor;
    double angle;
    PixelBox box;  // of a disc of 16 pixels, with a pixel round it
  };
  for (const double zoom : {1.0, 3.0}) {
    const double x = 10 * zoom;
    for (const auto& [anchor, angle, box] :
         {Case{Anchor::TopLeft, 0, {x - 1, -1, x + 17, 17}},
          Case{Anchor::TopLeft, 90, {x - 17, -1, x + 1, 17}},
          Case{Anchor::BottomRight, 0, {x - 17, -17, x + 1, 1}},
          Case{Anchor::Left, 0, {x - 1, -9, x + 17, 9}},
          Case{Anchor::Top, 0, {x - 9, -1, x + 9, 17}},
          Case{Anchor::Centre, 45, {x - 12.314, -12.314, x + 12.314, 12.314}}}) {
      aspect->set_anchor(anchor);
      aspect->set_angle(angle);
      const auto context = Cairo::Context::create(surface);
      context->scale(zoom, zoom);
      const auto found = aspect->runtime_box(context);
      SCOPED_TRACE(anchor_name(anchor) + std::to_string(angle));
      for (const auto side :
           {&PixelBox::left, &PixelBox::top, &PixelBox::right, &PixelBox::bottom}) {
        EXPECT_NEAR(found.*side, box.*side, 0.01);
      }
    }
  }
  // Clicks go through the states, and round.
  const auto& shown_signal = dynamic_cast<Signal&>(*aspect->get_object());
  const auto states = shown_signal.states();
  for (std::size_t i = 1; i <= states.size(); ++i) {
    aspect->click(ViewTag(aspect), false);
    EXPECT_EQ(shown_signal.get_state(), states[i % states.size()]);
  }
}

TEST_F(DiagramTest, a_label_says_who_is_there_and_how_fast) {
  auto* stretch = zone("A");
  auto* label = show<ViewLabel>(*stretch, {0, 0});
  EXPECT_EQ(label->get_text(), "");
  auto* lok = new_lok_in(stretch, "Express");
  lok->set_top_speed(160);
  EXPECT_EQ(label->get_text(), "Express");
  lok->set_actual_speed(126);
  // As near as the decoder's own steps come to it, in 126ths of the top speed.
  EXPECT_EQ(lok->get_actual_speed(), 124);
  EXPECT_EQ(label->get_text(), "Express\nActual Speed: 157 km/h");
  lok->set_name("Local");
  EXPECT_THAT(label->get_text(), HasSubstr("Local"));
  const auto context =
      Cairo::Context::create(Cairo::ImageSurface::create(Cairo::FORMAT_ARGB32, 100, 100));
  const auto box = label->runtime_box(context);
  lok->set_brake(true);
  layout().signal_pulse().emit();
  EXPECT_EQ(label->get_note(), "Held: the track ends ahead, or a point is set against it");
  EXPECT_THAT(label->get_text(), HasSubstr("Local"));
  const auto noted = label->runtime_box(context);
  EXPECT_GT(noted.right - noted.left, box.right - box.left) << "drawn again with its note";
  lok->destroy();
  EXPECT_EQ(label->get_text(), "");
  // Whoever places it holds it longer than the zone lasts.
  const Glib::RefPtr<ViewObj> held(label);
  label->reference();
  stretch->destroy();
  layout().signal_pulse().emit();
}

TEST_F(DiagramTest, tags_are_numbers_painted_over_each_other) {
  auto* points = show_point({0, 0});
  const auto states = dynamic_cast<Point&>(*points->get_object()).states();
  show_zone("A", {0, -50});
  TagImage tags;
  EXPECT_EQ(tags.hit(0, 0), nullptr);
  tags.begin(200, 200, Cairo::Matrix(1, 0, 0, 1, 100, 100));
  for (const auto& object : view->get_objects()) {
    object->draw_runtime_tags(tags.context(), tags.table());
  }
  const auto state_at = [&](double x, double y) {
    const auto tag = tags.hit(x + 100, y + 100);
    const auto* state = dynamic_cast<const ViewSwitch::StateTag*>(tag.get());
    EXPECT_TRUE(!tag || tag->object == points);
    return state ? state->state : nullptr;
  };
  EXPECT_EQ(tags.table().size(), 2u) << "nothing else can be clicked";
  EXPECT_EQ(state_at(15, 0), states[0]);
  EXPECT_EQ(state_at(15, 16), states[1]);
  EXPECT_EQ(state_at(-24, 0), states[0]) << "the way that is set is on top";
  EXPECT_EQ(state_at(0, -50), nullptr);
  EXPECT_EQ(tags.hit(-1, 100), nullptr);
  EXPECT_EQ(tags.hit(100, 200), nullptr);
  tags.table().clear();
  EXPECT_THROW(static_cast<void>(tags.hit(115, 100)), std::logic_error);
}

}  // namespace
}  // namespace zemblar::test

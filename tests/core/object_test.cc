#include "core/object.h"

#include "core/property.h"
#include "runtime/scoped_connection.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {
namespace {

class Thing : public Object {
 public:
  explicit Thing(const char* format = "Thing %1") : Glib::ObjectBase("Thing"), Object(format) {
    ++alive;
  }
  ~Thing() override { --alive; }
  static inline int alive = 0;
  static Thing* make(const char* name = nullptr) {
    auto* thing = new Thing;
    if (name) thing->set_name(name);
    return thing;
  }
};

class ObjectTest : public LayoutTest {
 protected:
  ObjectTest() : root(layout().get_scripts().add(Thing::make("root"))) {}
  // After the last test has dropped its document.
  static void TearDownTestSuite() { EXPECT_EQ(Thing::alive, 0); }

  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto* child : *root) result.push_back(child->get_name());
    return result;
  }
  using Names = std::vector<std::string>;
  Thing* root;
};

TEST_F(ObjectTest, gives_the_lowest_free_number_to_a_child_without_a_name_of_its_own) {
  root->add(Thing::make());
  auto* second = root->add(Thing::make());
  root->add(Thing::make());
  EXPECT_EQ(names(), (Names{"Thing 1", "Thing 2", "Thing 3"}));
  second->destroy();
  root->add(Thing::make());
  root->add(Thing::make());
  EXPECT_EQ(names(), (Names{"Thing 1", "Thing 3", "Thing 2", "Thing 4"}));

  root->child_at(0)->set_name("Other");  // frees number 1 as well
  root->add(Thing::make());
  EXPECT_EQ(root->child_at(4)->get_name(), "Thing 1");
  root->add(Thing::make("Other"));
  EXPECT_EQ(root->child_at(5)->get_name(), "Thing 5");
  // A pattern without a number cannot be searched for ever.
  root->add(new Thing("Fixed"));
  root->add(new Thing("Fixed"));
  EXPECT_EQ(root->child_count(), 8u);
}

TEST_F(ObjectTest, refuses_an_empty_taken_or_equal_name_without_a_word) {
  auto* a = root->add(Thing::make("a"));
  auto* b = root->add(Thing::make("b"));
  int notified = 0;
  int renamed = 0;
  b->property_name().signal_changed().connect([&] { ++notified; });
  const ScopedConnection watch(
      layout().signal_object_renamed().connect([&](Object*) { ++renamed; }));
  for (const auto* name : {"", "a", "b"}) b->set_name(name);
  EXPECT_EQ(b->get_name(), "b");
  EXPECT_EQ(notified + renamed, 0);

  b->set_name("Zone ²");  // collates like "Zone 2", and is another name
  a->set_name("Zone 2");
  EXPECT_EQ(a->get_name().raw(), "Zone 2");
  EXPECT_EQ(notified, 1);
  EXPECT_EQ(renamed, 2);
  EXPECT_EQ(root->find_child("Zone ²"), b);
  EXPECT_EQ(root->find_child("b"), nullptr);

  a->set_name("two\r\nlines\x7f");  // the file format cannot carry control characters
  EXPECT_EQ(a->get_name().raw(), "two  lines ");
}

TEST_F(ObjectTest, announces_a_subtree_when_it_is_attached_parents_first) {
  auto* top = Thing::make("top");
  std::vector<std::string> heard;
  const ScopedConnection watch(layout().signal_object_added().connect(
      [&](Object* object) { heard.push_back(object->get_name()); }));
  auto* middle = top->add(Thing::make("middle"));
  middle->add(Thing::make("leaf"));
  top->add(Thing::make("last"));
  EXPECT_TRUE(heard.empty());
  root->add(top);
  EXPECT_EQ(heard, (Names{"top", "middle", "leaf", "last"}));
}

TEST_F(ObjectTest, moves_a_child_with_all_below_it_and_ends_nobody) {
  for (const auto* name : {"a", "b", "c"}) root->add(Thing::make(name));
  auto* a = root->find_child("a");
  auto* leaf = a->add(Thing::make("leaf"));
  std::vector<std::string> heard;
  const ScopedConnection watches[] = {
      layout().signal_object_moved().connect([&](Object* o) { heard.push_back(o->get_name()); }),
      layout().signal_object_added().connect([&](Object*) { heard.push_back("added"); }),
      layout().signal_object_removed().connect([&](Object*) { heard.push_back("removed"); })};
  const struct {
    unsigned place;
    Names order;
  } moves[] = {{1, {"b", "a", "c"}},
               {99, {"b", "c", "a"}},
               {2, {"b", "c", "a"}},
               {0, {"a", "b", "c"}},
               {2, {"b", "c", "a"}}};
  for (const auto& move : moves) {
    a->move_to(*root, move.place);
    EXPECT_EQ(names(), move.order);
  }
  EXPECT_EQ(heard, (Names(4, "a"))) << "not where it stands already";
  EXPECT_EQ(root->add(Thing::make("last"))->get_position(), 3) << "the last child is known";

  auto* other = root->child_at(1);
  other->add(Thing::make("a"));
  heard.clear();
  a->move_to(*other, 0);
  EXPECT_EQ(a->get_name(), "Thing 1") << "its own is taken there";
  EXPECT_EQ(other->find_child("Thing 1"), a);
  EXPECT_EQ(other->find_child("a"), other->child_at(1));
  EXPECT_EQ(root->find_child("a"), nullptr);
  EXPECT_EQ(a->child_at(0), leaf);
  EXPECT_EQ(heard, Names{"Thing 1"});
}

TEST_F(ObjectTest, ends_children_before_parents_and_tells_each_side_in_order) {
  auto* parent = root->add(Thing::make("parent"));
  auto* child = parent->add(Thing::make("child"));
  std::vector<std::string> heard;
  child->signal_deleted().connect([&] {
    heard.push_back("child deleted");
    EXPECT_EQ(child->get_parent(), parent);
    EXPECT_TRUE(child->is_deleting());
  });
  parent->signal_child_removed().connect([&](Object*) { heard.push_back("child removed"); });
  parent->signal_deleted().connect([&] {
    heard.push_back("parent deleted");
    EXPECT_TRUE(parent->empty());
  });
  const ScopedConnection watch(layout().signal_object_removed().connect(
      [&](Object* object) { heard.push_back("layout: " + object->get_name()); }));
  parent->destroy();
  EXPECT_EQ(heard, (Names{"child deleted", "child removed", "layout: child", "parent deleted",
                          "layout: parent"}));
}

TEST_F(ObjectTest, survives_handlers_that_destroy_siblings_parents_and_the_object_itself) {
  for (int victim = 0; victim < 3; ++victim) {
    auto* parent = root->add(Thing::make());
    auto* first = parent->add(Thing::make());
    auto* second = parent->add(Thing::make());
    parent->add(Thing::make());
    first->signal_deleted().connect([=] {
      (std::vector{second, first, parent})[victim]->destroy();
    });
    (victim == 2 ? first : parent)->destroy();
    EXPECT_EQ(Thing::alive, 1) << victim;
    EXPECT_TRUE(root->empty()) << victim;
  }
}

TEST_F(ObjectTest, ends_with_its_children_when_a_handler_ends_it_while_they_end) {
  auto* container = root->add(Thing::make());
  auto* first = container->add(Thing::make());
  container->add(Thing::make());
  first->signal_deleted().connect([container] { container->destroy(); });
  container->destroy_children();
  EXPECT_TRUE(root->empty());
  EXPECT_EQ(Thing::alive, 1);
}

TEST_F(ObjectTest, walks_children_in_both_directions) {
  EXPECT_EQ(root->begin(), root->end());
  for (const auto* name : {"a", "b", "c"}) root->add(Thing::make(name));
  auto last = root->end();
  EXPECT_EQ((*--last)->get_name(), "c");
  EXPECT_EQ((last - 2)->get_name(), "a");
  EXPECT_EQ(root->begin() - root->end(), -3);
  EXPECT_TRUE(root->begin() <= last && last >= root->begin() && !(last <= root->begin()));
  EXPECT_FALSE(root->end());
  EXPECT_EQ(*ObjectIter(*root->child_at(1)), root->child_at(1));
  EXPECT_EQ(root->child_at(3), nullptr);
  auto* other = layout().get_scripts().add(Thing::make("other"));
  EXPECT_THROW(static_cast<void>(root->begin() - other->begin()), std::runtime_error);
  EXPECT_EQ(root->child_at(0)->get_ancestors(),
            (std::vector<Object*>{root, &layout().get_scripts(), &layout()}));
}

class Switch : public Glib::Object {
 public:
  Switch() : Glib::ObjectBase("Switch") {
    register_property<bool>(this, "on", &Switch::get_on, &Switch::set_on);
    register_property<bool>(this, "lit", &Switch::get_on);
  }
  bool get_on() const { return on_; }
  void set_on(bool on) {
    if (on == on_) return;
    on_ = on;
    notify_property(*this, "on");
    notify_property(*this, "lit");
  }
  Glib::PropertyProxy<bool> property_on() { return {this, "on"}; }

 private:
  bool on_ = false;
};

TEST(Property, is_notified_once_for_each_real_change_however_it_is_set) {
  Switch a;
  Switch b;  // a second instance installs nothing twice
  int changes = 0;
  a.property_on().signal_changed().connect([&] { ++changes; });
  a.property_on().set_value(true);
  a.property_on().set_value(true);
  a.set_on(true);
  g_object_set(a.gobj(), "on", TRUE, nullptr);
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(a.property_on().get_value());
  EXPECT_FALSE(b.get_on());
}

TEST(Property, binding_flows_out_of_the_side_that_cannot_be_written) {
  Switch light;
  Switch follower;
  Switch opposite;
  Switch twin;
  light.set_on(true);
  bind_property(light, "lit", follower, "on");
  bind_property(opposite, "on", light, "!lit");  // the arguments the other way round
  bind_property(light, "on", twin, "on");
  EXPECT_TRUE(follower.get_on());
  EXPECT_FALSE(opposite.get_on());
  EXPECT_TRUE(twin.get_on());
  twin.set_on(false);
  EXPECT_FALSE(light.get_on());
  EXPECT_FALSE(follower.get_on());
  EXPECT_TRUE(opposite.get_on());
}

TEST(PropertyDeathTest, refuses_bindings_that_cannot_work) {
  Switch a;
  Switch b;
  EXPECT_DEATH(bind_property(a, "no", b, "on"), "Property Bind: Source Property Not Found");
  EXPECT_DEATH(bind_property(a, "on", b, "!no"), "Property Bind: Target Property Not Found");
  EXPECT_DEATH(bind_property(a, "lit", b, "lit"), "Property Bind: Both Source & Target ReadOnly");
}

TEST(Property, of_an_object_whose_program_side_has_gone_is_left_alone) {
  GObject* kept = nullptr;
  {
    Switch a;
    kept = G_OBJECT(g_object_ref(a.gobj()));
  }
  gboolean value = FALSE;
  g_object_set(kept, "on", TRUE, nullptr);
  g_object_get(kept, "on", &value, nullptr);
  EXPECT_FALSE(value);
  g_object_unref(kept);
}

}  // namespace
}  // namespace zemblar::test

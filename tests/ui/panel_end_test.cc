// What is left of a properties panel that is shown no more: nothing.

#include <gtkmm/colorbutton.h>
#include <gtkmm/window.h>
#include <malloc.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "devices/ecos/device_ecos.h"
#include "devices/railcom/dummy_railcom_reader.h"
#include "diagram/view.h"
#include "diagram/view_object.h"
#include "locomotives/lok.h"
#include "simulator/soak/random_layout.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/widget_search.h"
#include "track/point.h"
#include "ui/toolkit/image_button.h"
#include "ui/windows/panel_view.h"

namespace zemblar::test {
namespace {

/// Widgets that have been seen and have not ended, by their class and number.
class Living {
 public:
  Living() = default;
  explicit Living(Gtk::Widget& widget) { watch(widget); }
  ~Living() {
    for (const auto& [object, name] : names_) g_object_weak_unref(object, &Living::forget, this);
  }
  /// With all that stands in it.
  void watch(Gtk::Widget& widget) { watch(widget.gobj()); }
  [[nodiscard]] std::string names() const {
    std::map<std::string, int> counts;
    for (const auto& [object, name] : names_) ++counts[name];
    std::string text;
    for (const auto& [name, count] : counts) text += std::to_string(count) + " " + name + " ";
    return text;
  }
  [[nodiscard]] std::size_t count() const { return names_.size(); }

 private:
  void watch(GtkWidget* widget) {
    if (names_.emplace(G_OBJECT(widget), G_OBJECT_TYPE_NAME(widget)).second) {
      g_object_weak_ref(G_OBJECT(widget), &Living::forget, this);
    }
    if (!GTK_IS_CONTAINER(widget)) return;
    const auto each = [](GtkWidget* child, gpointer self) {
      static_cast<Living*>(self)->watch(child);
    };
    gtk_container_forall(GTK_CONTAINER(widget), each, this);
  }
  static void forget(gpointer self, GObject* object) {
    static_cast<Living*>(self)->names_.erase(object);
  }

  std::map<GObject*, std::string> names_;
};

/// A layout with an object of every kind, one of which at a time is shown.
class PanelEndTest : public LayoutTest {
 protected:
  PanelEndTest() {
    simulator::Chance chance(5);
    simulator::fill_at_random(chance, true);
    auto* reader = new DeviceDummyRailComReader;
    layout().get_devices().add(reader);
    layout().get_devices().add(new ECoS);
    window.add(panels);
    window.show_all();
    handle_events();
  }
  /// The panel view is a member that goes before the layout.
  ~PanelEndTest() override { panels.show_object(nullptr); }

  template <typename Visit>
  static void each_object(zemblar::Object& object, const Visit& visit) {
    visit(object, nullptr);
    for (auto* child : object) each_object(*child, visit);
    auto* view = dynamic_cast<View*>(&object);
    if (!view) return;
    for (const auto& drawn : view->get_objects()) visit(*drawn->get_object(), drawn.operator->());
  }

  /// What is shown, in what makes it scroll.
  Gtk::Widget* panel() {
    Gtk::Widget* widget = &panels;
    for (int depth = 0; depth < 3; ++depth) widget = dynamic_cast<Gtk::Bin&>(*widget).get_child();
    return widget;
  }

  PanelView panels{"Nothing"};
  Gtk::Window window;
};

TEST_F(PanelEndTest, no_part_of_a_panel_outlives_it) {
  std::set<std::string> faults;
  std::set<std::string> kinds;
  each_object(layout(), [&](zemblar::Object& object, ViewObj* drawn) {
    Living living;
    panels.show_object(&object, drawn);
    handle_events();
    if (dynamic_cast<Gtk::Label*>(panel())) return;  // it has none
    living.watch(*panel());
    kinds.insert(typeid(object).name());
    panels.show_object(nullptr);
    handle_events();
    if (!living.names().empty()) {
      faults.insert(std::string(typeid(object).name()) + ": " + living.names());
    }
  });
  EXPECT_GE(kinds.size(), 24U);
  EXPECT_EQ(faults, std::set<std::string>{});
}

TEST_F(PanelEndTest, a_form_in_a_panel_ends_when_another_one_takes_its_place) {
  auto* point = layout().get_points().add(new Point);
  auto* lok = layout().get_loks().add(new Lok);
  const auto rebuild = [&] {
    point->add_state();
    point->add_output();
    lok->add_decoder();
    handle_events();
    while (point->states().size() > 2) point->states().back()->destroy();
    point->remove_output(2);
    lok->remove_decoder(1);
    handle_events();
  };
  for (zemblar::Object* object : std::initializer_list<zemblar::Object*>{point, lok}) {
    panels.show_object(object);
    Living living;
    living.watch(*panel());
    for (int i = 0; i < 5; ++i) {
      rebuild();
      living.watch(*panel());
    }
    EXPECT_EQ(living.count(), Living(*panel()).count()) << living.names();
  }
}

TEST_F(PanelEndTest, a_dialog_of_a_panel_closes_with_it) {
  panels.show_object(layout().get_views().child_at(0));
  handle_events();
  get_widget<Gtk::ColorButton>(*panel()).clicked();
  get_widget<ImageButton>(*panel()).choose_button().clicked();
  const auto dialogs = [] {
    auto* windows = gtk_window_list_toplevels();
    int count = 0;
    for (auto* next = windows; next; next = next->next) count += GTK_IS_DIALOG(next->data);
    g_list_free(windows);
    return count;
  };
  EXPECT_EQ(dialogs(), 2);
  panels.show_object(&layout());
  handle_events();
  EXPECT_EQ(dialogs(), 0);
}

#ifndef __SANITIZE_ADDRESS__  // which keeps what is freed
// ZEMBLAR_SELECTIONS=10000 takes a minute.
TEST_F(PanelEndTest, memory_stays_flat_however_many_panels_are_shown) {
  const auto* wanted = std::getenv("ZEMBLAR_SELECTIONS");
  const int selections = wanted ? std::atoi(wanted) : 200;
  const auto select = [&](int count) {
    while (count > 0) {
      each_object(layout(), [&](zemblar::Object& object, ViewObj* drawn) {
        panels.show_object(&object, drawn);
        handle_events();
        --count;
      });
    }
  };
  select(100);
  const auto before = mallinfo2().uordblks;
  select(selections);
  const auto after = mallinfo2().uordblks;
  const auto grown = after > before ? after - before : 0;
  RecordProperty("bytes_per_selection", static_cast<int>(grown / selections));
  EXPECT_LT(grown / static_cast<std::size_t>(selections), 300U) << "bytes a selection";
}
#endif

}  // namespace
}  // namespace zemblar::test

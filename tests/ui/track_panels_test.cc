#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/label.h>
#include <yaml-cpp/yaml.h>

#include <memory>

#include "core/collections.h"
#include "tests/support/fake_station.h"
#include "tests/support/small_railway.h"
#include "tests/ui/panel_of.h"
#include "tests/ui/widget_search.h"
#include "track/crossing.h"
#include "track/point.h"
#include "track/scissor.h"
#include "track/signal.h"
#include "ui/panels/block_properties.h"
#include "ui/panels/point_output_properties.h"
#include "ui/panels/point_properties.h"

namespace zemblar::test {
namespace {

using Type = PointOutput::Type;

class TrackPanelTest : public SmallRailway {
 protected:
  ~TrackPanelTest() override { layout().new_document(false); }

  /// All that is saved of the track.
  static std::string track() {
    YAML::Emitter out;
    out << YAML::BeginSeq;
    for (auto* object : layout().get_points()) object->save(out);
    for (auto* object : layout().get_blocks()) object->save(out);
    out << YAML::EndSeq;
    return out.c_str();
  }
  static Log texts(Gtk::MenuShell& menu) {
    Log texts;
    for (auto* item : menu.get_children()) {
      texts.push_back(dynamic_cast<Gtk::MenuItem&>(*item).get_label());
    }
    return texts;
  }

  FakeStation* station = FakeStation::in_service();
  Point* point = layout().get_points().add(new Point);
};

TEST_F(TrackPanelTest, showing_an_object_changes_nothing_in_it) {
  for (const auto type : {Type::Function, Type::Extended, Type::Servo}) {
    point->add_output().set_type(type);
    for (auto* state : point->states()) {
      state->set_setting(point->get_output(2),
                         {.servo = 500, .extended = 63, .function = true, .enabled = false});
    }
  }
  point->get_output(2).set_address(Address(5, true));
  auto* signal = layout().get_points().add(new Signal);
  dynamic_cast<SignalState&>(*signal->states()[0]).set_image("/nowhere/stop.png");
  auto* crossing = layout().get_blocks().add(new Crossing);
  crossing->replace_lok(new_lok());
  auto* scissor = layout().get_points().add(new Scissor);
  auto* a = zone("A", false);
  const auto before = track();
  for (Object* object : std::initializer_list<Object*>{
           point, point->states()[1], signal, signal->states()[0], scissor, crossing, a,
           &layout().get_points(), &layout().get_blocks()}) {
    ASSERT_TRUE(panel_of(*object)) << object->get_name();
  }
  EXPECT_EQ(track(), before);
  EXPECT_EQ(station->sent(), Log());
  EXPECT_EQ(crossing->get_lok()->get_name(), "lok");
}

TEST_F(TrackPanelTest, a_point_is_set_and_followed_by_its_choice_of_states) {
  const auto panel = panel_of(*point);
  auto& choice = get_widget<Gtk::ComboBoxText>(*panel);
  EXPECT_EQ(choice.get_active_text(), "Straight");
  choice.set_active(1);
  EXPECT_EQ(station->sent(), Log{"1/1 right"});
  get_widget<Gtk::Button>(*panel, "Send _Again").clicked();
  EXPECT_EQ(station->sent(), Log{"1/1 right"});
  point->states()[0]->activate();
  station->sent();
  EXPECT_EQ(choice.get_active_text(), "Straight");
  point->states()[0]->set_name("Main");
  EXPECT_EQ(choice.get_active_text(), "Main");
  EXPECT_EQ(find_widget<Gtk::Button>(*panel, "Remove State"), nullptr);
  get_widget<Gtk::Button>(*panel, "A_dd State").clicked();
  handle_events();
  choice.set_active(2);
  EXPECT_EQ(point->get_state()->get_name(), "State 1");
  get_widget<Gtk::Button>(*panel, "Remove State").clicked();
  handle_events();
  EXPECT_EQ(point->states()[0]->get_name(), "Curved");
  EXPECT_EQ(choice.get_active_text(), "State 1");
  point->destroy();
  handle_events();
  get_widget<Gtk::Button>(*panel, "A_dd State").clicked();
}

TEST_F(TrackPanelTest, the_focus_goes_to_what_a_button_made_or_to_the_next_of_what_it_removed) {
  auto* panel = point->make_properties_panel({});
  Gtk::Window window;
  window.add(*Gtk::manage(panel));
  window.show_all();
  auto& pages = get_widget<Gtk::Notebook>(window);
  const auto press = [&](const char* label) {
    auto& button = get_widget<Gtk::Button>(window, label);
    button.grab_focus();
    button.clicked();
    handle_events();
    return window.get_focus();
  };
  const auto label_of = [](Gtk::Widget* widget) {
    auto* button = dynamic_cast<Gtk::Button*>(widget);
    return button ? button->get_label().raw() : "";
  };
  const auto* name = dynamic_cast<NameEntry*>(press("A_dd State"));
  ASSERT_TRUE(name);
  EXPECT_EQ(name->get_text(), point->states().back()->get_name());
  EXPECT_EQ(name, find_widget<NameEntry>(window, "Name of state 3"));
  EXPECT_TRUE(find_widget<Gtk::Button>(window, "Remove state 3"));
  EXPECT_EQ(label_of(press("Remove State")), "A_dd State") << "those that are left must stay";
  pages.set_current_page(1);
  handle_events();
  EXPECT_TRUE(dynamic_cast<Gtk::Widget*>(press("Add _Output"))->is_ancestor(pages));
  EXPECT_EQ(label_of(press("Remove Output")), "Remove Output");
  layout().get_points().add(new Point);
  EXPECT_EQ(press("Ne_xt Free"), find_widget<AddrSpin>(window, ""));
  EXPECT_EQ(label_of(press("Remove Output")), "Add _Output");
}

TEST_F(TrackPanelTest, a_state_has_a_control_for_each_output_after_its_type) {
  auto* curved = point->states()[1];
  auto& output = point->get_output(1);
  const auto panel = panel_of(*curved);
  const auto setting = [&] { return curved->get_setting(output); };
  get_widget<Gtk::ComboBoxText>(*panel, "Action at Address 1, output 1").set_active(0);
  EXPECT_EQ(setting().basic, 0);
  get_widget<Gtk::CheckButton>(*panel, "Address 1, output 1").set_active(false);
  EXPECT_FALSE(setting().enabled);
  output.set_output(3);
  EXPECT_TRUE(find_widget<Gtk::ComboBoxText>(*panel, "Action at Address 1, output 3"));
  output.set_type(Type::Extended);
  handle_events();
  get_widget<Gtk::SpinButton>(*panel, "Action at Address 1").set_value(99);
  EXPECT_EQ(setting().extended, 63);
  output.set_type(Type::Function);
  handle_events();
  get_widget<Gtk::ComboBoxText>(*panel, "Action at Address 1, function 3").set_active(0);
  EXPECT_FALSE(setting().function);
  output.set_type(Type::Servo);
  handle_events();
  get_widget<Gtk::SpinButton>(*panel, "Action at Servo").set_value(-12.5);
  EXPECT_EQ(setting().servo, -12.5f);
  point->add_output();
  handle_events();
  EXPECT_TRUE(find_widget<Gtk::ComboBoxText>(*panel, "Action at Address 1, output 1"));
  point->remove_output(1);
  handle_events();
  EXPECT_FALSE(find_widget<Gtk::SpinButton>(*panel, "Action at Servo"));
}

TEST_F(TrackPanelTest, an_output_shows_the_rows_of_its_type_and_offers_devices_for_it) {
  auto* detector = layout().get_devices().add(new Detector);
  const auto output = point->get_outputs()[0];
  PointOutputProperties form(output, "", {});
  auto& type = get_widget<Gtk::ComboBoxText>(form);
  auto& device = get_widget<ObjectButton>(form);
  EXPECT_EQ(texts(*device.make_menu()), (Log{"(Default)", "", "Devices", "Station 1"}));
  device.set_object(station);
  device.set_object(nullptr);
  device.set_object(detector);
  EXPECT_EQ(output->get_device(), detector);
  type.set_active_text("Locomotive Function");
  EXPECT_EQ(device.get_object(), nullptr);
  auto& address = get_widget<AddrSpin>(form);
  address.set_value(3000);
  EXPECT_EQ(output->get_address(), Address(3000));
  type.set_active_text("Extended Accessory");
  EXPECT_EQ(address.get_value_as_int(), 2048);
  type.set_active_text("Basic Accessory");
  address.set_value(600);
  EXPECT_EQ(output->get_address(), Address(Address::Kind::accessory, 512));
  type.set_active_text("Servo");
  EXPECT_EQ(output->get_type(), Type::Servo);
  EXPECT_EQ(texts(*device.make_menu()),
            (Log{"(Default)", "", "Devices", "No device of this program moves servos yet"}))
      << "a station is there";
  EXPECT_FALSE(address.get_parent()->get_parent()->get_visible());
}

TEST_F(TrackPanelTest, an_address_says_which_other_point_has_it_and_offers_the_next_free_one) {
  const auto output = point->get_outputs()[0];
  PointOutputProperties form(output, "", {});
  auto& note = get_widget<AddressNote>(form);
  const auto told = [&] {
    layout().signal_pulse().emit();
    const std::string text =
        note.get_parent()->get_visible() ? get_widget<Gtk::Label>(note).get_text().raw() : "";
    EXPECT_EQ(get_widget<AddrSpin>(form).get_accessible()->get_description(), text);
    return text;
  };
  auto* second = layout().get_points().add(new Signal);
  second->set_name("Home Signal");
  EXPECT_EQ(told(), "Address 1 is also Home Signal's");
  output->set_output(2);
  EXPECT_EQ(told(), "") << "another pair of coils";
  auto* crossover = layout().get_points().add(new Scissor);
  crossover->set_name("Crossover");
  EXPECT_EQ(told(), "Address 1 is also Crossover's");
  second->get_output(1).set_address(Address(Address::Kind::accessory, 2));
  second->get_output(1).set_output(2);
  get_widget<Gtk::Button>(note).clicked();
  EXPECT_EQ(output->get_address(), Address(Address::Kind::accessory, 3));
  EXPECT_EQ(told(), "");
  second->get_output(1).set_type(Type::Servo);
  output->set_type(Type::Servo);
  EXPECT_EQ(told(), "");
}

TEST_F(TrackPanelTest, a_block_offers_detectors_and_its_holder_can_be_set_free) {
  auto* a = zone("A");
  a->get_input()->set_name("Reader");
  auto* lok = new_lok_in(a);
  ZoneProperties panel(*a, {});
  auto& detector = get_widget<ObjectButton>(panel, "Reader");
  EXPECT_EQ(texts(*detector.make_menu()), (Log{"(None)", "", "Detectors", "Reader"}));
  const auto lok_panel = panel_of(*lok);
  EXPECT_TRUE(shows(*lok_panel, "A"));
  get_widget<ObjectButton>(panel, "lok").set_object(nullptr);
  EXPECT_EQ(a->get_lok(), nullptr);
  EXPECT_FALSE(shows(*lok_panel, "A"));
  a->set_lok(lok);
  EXPECT_TRUE(find_widget<ObjectButton>(panel, "lok"));
  detector.set_object(nullptr);
  EXPECT_EQ(a->get_input(), nullptr);
  get_widget<Gtk::CheckButton>(*lok_panel, "_Brake").set_active();
  EXPECT_TRUE(lok->get_brake());
}

TEST_F(TrackPanelTest, a_locomotive_tells_what_lies_ahead_and_behind) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[1]);
  const auto panel = panel_of(*lok);
  at(zones[2]).occupy();
  EXPECT_TRUE(shows(*panel, "B, C"));
  EXPECT_TRUE(shows(*panel, "End of track"));
  EXPECT_TRUE(shows(*panel, "A"));
  zones[0]->set_lok(new_lok("other"));
  EXPECT_TRUE(shows(*panel, "A, held by other"));
  lok->destroy();
  zones[0]->replace_lok(nullptr);  // the panel stands a little longer
}

}  // namespace
}  // namespace zemblar::test

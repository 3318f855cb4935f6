#include <gtkmm/checkbutton.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/filechooser.h>
#include <gtkmm/progressbar.h>

#include <memory>

#include "core/panel_factory.h"
#include "devices/ecos/device_ecos.h"
#include "devices/liusb/device_liusb.h"
#include "devices/railcom/dummy_railcom_reader.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "devices/tessara/serial_port_tessara.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "simulator/bus/tessara_master.h"
#include "simulator/railway/memory_station.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/panel_of.h"
#include "tests/ui/widget_search.h"
#include "ui/panels/decoder_form.h"
#include "ui/panels/device_toplevel_properties.h"
#include "ui/panels/function_list.h"
#include "ui/panels/function_properties.h"
#include "ui/panels/host_entry.h"
#include "ui/panels/lok_attribute_list.h"
#include "ui/toolkit/addr_spin.h"
#include "ui/toolkit/address_note.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/image_button.h"
#include "ui/windows/layout_dialogs.h"
#include "ui/windows/object_list.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;

class PanelTest : public LayoutTest {
 protected:
  ~PanelTest() override { layout().new_document(false); }

  static Decoder& decoder_of(Lok& lok, unsigned index = 0) {
    return *lok.get_decoders().at(index).operator->();
  }

  VirtualClock clock;
  Lok* lok = layout().get_loks().add(new Lok);
};

TEST_F(PanelTest, showing_an_object_changes_nothing_in_it) {
  auto* function = new Function(lok);
  function->set_type(Function::Type::Script);
  function->set_function(28);
  function->set_on_image("/nowhere/at all.png");
  lok->add(function);
  lok->set_top_speed(123456);
  auto& decoder = decoder_of(*lok);
  decoder.set_address(Address(5, true));
  decoder.set_speed_ratio(0.125);
  decoder.set_reverse(true);
  lok->add_decoder();
  const auto before = layout().serialize();
  for (zemblar::Object* object : std::initializer_list<zemblar::Object*>{
           lok, function, &layout().get_loks(), &layout().get_devices()}) {
    ASSERT_TRUE(panel_of(*object)) << object->get_name();
  }
  EXPECT_EQ(layout().serialize(), before);
  EXPECT_EQ(decoder.state().mask, 0U);
}

TEST_F(PanelTest, a_name_that_cannot_be_given_is_shown_as_it_is_when_the_entry_is_left) {
  layout().get_loks().add(new Lok)->set_name("Taken");
  lok->set_name("Mine");
  NameEntry entry(*lok);
  entry.set_text("Mine Too");
  EXPECT_EQ(lok->get_name(), "Mine Too");
  for (const char* refused : {"", "Taken"}) {
    entry.set_text(refused);
    EXPECT_EQ(lok->get_name(), "Mine Too");
    EXPECT_EQ(entry.get_text(), refused);
    entry.activate();
    EXPECT_EQ(entry.get_text(), "Mine Too");
  }
  lok->set_name("Elsewhere");
  EXPECT_EQ(entry.get_text(), "Elsewhere");
}

TEST_F(PanelTest, what_is_being_typed_is_taken_as_it_would_be_when_the_field_is_left_for_a_save) {
  install_layout_dialogs();
  layout().get_loks().add(new Lok)->set_name("Taken");
  lok->set_name("Mine");
  Gtk::Window window;
  Gtk::VBox box;
  NameEntry name(*lok);
  AddrSpin address(Address::Kind::mobile);
  box.add(name);
  box.add(address);
  window.add(box);
  window.show_all();
  clear_status();
  name.grab_focus();
  name.activate();
  for (const char* typed : {"Take", "Taken"}) name.set_text(typed);
  Layout::dialogs().finish_edits();
  EXPECT_EQ(lok->get_name(), "Mine");
  EXPECT_EQ(get_status(), "The name “Taken” is taken.");
  address.grab_focus();
  address.set_text("777");
  Layout::dialogs().finish_edits();
  EXPECT_EQ(address.get_value_as_int(), 777);
  Layout::dialogs() = {};
}

TEST_F(PanelTest, an_address_is_kept_within_its_kind) {
  AddrSpin mobile(Address::Kind::mobile);
  mobile.set_address(Address(5, true));
  EXPECT_EQ(mobile.get_address(), Address(5, true));
  mobile.set_value(99999);
  EXPECT_EQ(mobile.get_address(), Address(10239));
  mobile.set_long(false);
  EXPECT_EQ(mobile.get_address(), Address(127, false));
  EXPECT_EQ(mobile.get_value(), 127);
  mobile.set_value(128);
  EXPECT_EQ(mobile.get_address(), Address(128, true));
  mobile.set_value(-1);
  EXPECT_EQ(mobile.get_address(), Address(1, true));

  AddrSpin accessory(Address::Kind::accessory);
  accessory.set_value(4000);
  EXPECT_EQ(accessory.get_address(), Address(Address::Kind::accessory, 512));
  accessory.set_address(Address(Address::Kind::output, 2048));
  EXPECT_EQ(accessory.get_address(), Address(Address::Kind::accessory, 512));
}

TEST_F(PanelTest, the_long_mark_and_the_address_of_a_decoder_go_together) {
  const auto panel = panel_of(*lok);
  auto& spin = get_widget<AddrSpin>(*panel);
  auto& is_long = get_widget<Gtk::CheckButton>(*panel, "Lo_ng");
  spin.set_value(2000);
  EXPECT_TRUE(is_long.get_active());
  EXPECT_EQ(decoder_of(*lok).get_address(), Address(2000));
  is_long.set_active(false);
  EXPECT_EQ(decoder_of(*lok).get_address(), Address(127, false));
  EXPECT_EQ(spin.get_value(), 127);
  decoder_of(*lok).set_address(Address(3, true));
  EXPECT_TRUE(is_long.get_active());
  EXPECT_EQ(spin.get_value(), 3);
}

TEST_F(PanelTest, an_address_says_which_other_locomotive_has_it_and_offers_the_next_free_one) {
  auto* station = layout().get_devices().add(new ECoS);
  auto* other = layout().get_devices().add(new ECoS);
  const auto panel = panel_of(*lok);
  auto& form = get_widget<DecoderForm>(*panel);
  auto& note = get_widget<AddressNote>(form);
  const auto told = [&note] {
    layout().signal_pulse().emit();
    return note.get_parent()->get_visible() ? get_widget<Gtk::Label>(note).get_text().raw() : "";
  };
  EXPECT_EQ(decoder_of(*lok).get_address(), Address(3));
  EXPECT_EQ(told(), "");
  lok->add_decoder();
  EXPECT_EQ(told(), "") << "two decoders of one locomotive";
  auto* second = layout().get_loks().add(new Lok);
  auto* group = layout().get_loks().add(new LokGroup);
  second->set_name("Second");
  EXPECT_EQ(told(), "Address 3 is also Second's");
  auto* third = group->add(new Lok);
  EXPECT_EQ(told(), "Address 3 is also Second's, and that of 1 more");
  decoder_of(*third).set_address(Address(4));
  decoder_of(*second).set_device(station);
  EXPECT_EQ(told(), "Address 3 is also Second's");
  decoder_of(*lok).set_device(other);
  EXPECT_EQ(told(), "") << "of another station";
  decoder_of(*lok).set_device(static_cast<Device*>(nullptr));
  get_widget<Gtk::Button>(note).clicked();
  EXPECT_EQ(decoder_of(*lok).get_address(), Address(5));
  EXPECT_EQ(told(), "");
  decoder_of(*lok).set_address(Address(Address::max_long));
  get_widget<Gtk::Button>(note).clicked();
  EXPECT_EQ(decoder_of(*lok).get_address(), Address(1));
}

TEST_F(PanelTest, a_decoder_chooses_its_station_and_falls_back_when_that_goes) {
  auto* station = layout().get_devices().add(new ECoS);
  const auto panel = panel_of(*lok);
  auto& chooser = get_widget<ObjectButton>(*panel);
  EXPECT_EQ(chooser.get_accessible()->get_name(), "(Default)");
  chooser.set_object(station);
  EXPECT_EQ(decoder_of(*lok).get_device(), station);
  station->destroy();
  EXPECT_EQ(decoder_of(*lok).get_device(), nullptr);
  EXPECT_EQ(chooser.get_accessible()->get_name(), "(Default)");
}

TEST_F(PanelTest, decoders_are_added_and_removed_but_for_the_last) {
  const auto panel = panel_of(*lok);
  EXPECT_EQ(find_widget<Gtk::Button>(*panel, "Remove Decoder"), nullptr);
  auto& first = decoder_of(*lok);
  get_widget<Gtk::Button>(*panel, "New _Decoder").clicked();
  auto* second = &decoder_of(*lok, 1);
  handle_events();
  auto& remove = get_widget<Gtk::Button>(*panel, "Remove Decoder");
  remove.clicked();
  remove.clicked();
  ASSERT_EQ(lok->get_decoders().size(), 1U);
  EXPECT_EQ(&decoder_of(*lok), second);
  EXPECT_NE(&decoder_of(*lok), &first);
  handle_events();
  EXPECT_EQ(find_widget<Gtk::Button>(*panel, "Remove Decoder"), nullptr);
}

TEST_F(PanelTest, attributes_stay_sorted_above_the_row_for_a_new_one) {
  LokAttributeList list(*lok);
  const auto& columns = LokAttributeModel::columns();
  const auto rows = [&list, &columns] {
    std::string text;
    for (const auto& row : list.list().get_model()->children()) {
      text += row.get_value(columns.key) + "=" + row.get_value(columns.value) + " ";
    }
    return text;
  };
  lok->set_attribute("owner", "me");
  list.enter_key("class");
  list.enter_key("z");
  list.enter_key("");
  list.enter_key("owner");
  list.enter_value("0", "V60");
  list.enter_value("3", "the last row takes no value");
  EXPECT_EQ(rows(), "class=V60 owner=me z= Add Attribute…= ");
  EXPECT_EQ(lok->get_attributes().at("class"), "V60");
  lok->remove_attribute("owner");
  EXPECT_EQ(rows(), "class=V60 z= Add Attribute…= ");
  list.list().get_selection()->select(Gtk::TreePath("2"));
  EXPECT_FALSE(list.remove_button().get_sensitive());
  Gtk::Window window;
  window.add(list);
  window.show_all();
  list.list().get_selection()->select(Gtk::TreePath("1"));
  list.remove_button().grab_focus();
  list.remove_button().clicked();
  EXPECT_EQ(rows(), "class=V60 Add Attribute…= ");
  EXPECT_EQ(window.get_focus(), &list.remove_button());
  list.remove_button().clicked();
  EXPECT_EQ(window.get_focus(), &list.list());
}

TEST_F(PanelTest, functions_are_listed_numbered_and_deleted) {
  const auto panel = panel_of(*lok);
  auto& list = get_widget<FunctionList>(*panel);
  Gtk::Window window;
  window.add(*panel);
  window.show_all();
  handle_events();
  const auto place = list.new_button().get_allocation().get_y();
  for (int i = 0; i < 3; ++i) list.new_button().clicked();
  handle_events();
  EXPECT_EQ(list.new_button().get_allocation().get_y(), place) << "not away from the pointer";
  ASSERT_EQ(lok->child_count(), 3U);
  const auto number = [this](unsigned n) {
    return dynamic_cast<Function*>(lok->child_at(n))->get_function();
  };
  EXPECT_EQ(number(2), 2U);
  list.list().get_selection()->select(Gtk::TreePath("1"));
  list.delete_button().grab_focus();
  list.delete_button().clicked();
  EXPECT_EQ(window.get_focus(), &list.delete_button());
  EXPECT_EQ(lok->child_count(), 2U);
  EXPECT_EQ(list.list().get_model()->children().size(), 2U);
  list.new_button().clicked();
  EXPECT_EQ(number(2), 1U);
  const std::vector<Gtk::CellRenderer*> cells = list.list().get_column(1)->get_cell_renderers();
  g_signal_emit_by_name(cells.front()->gobj(), "edited", "0", "Function 3");
  EXPECT_EQ(get_status(), "“Function 3” is taken: “Function 1” keeps its name.");
  for (int i = 0; i < 3; ++i) list.delete_button().clicked();
  EXPECT_EQ(lok->child_count(), 0U) << "one after the other";
  EXPECT_EQ(window.get_focus(), &list.new_button());
}

TEST_F(PanelTest, a_name_of_a_function_is_offered_as_long_as_another_function_has_it) {
  auto* horn = lok->add(new Function(lok));
  horn->set_name("Horn");
  auto* light = lok->add(new Function(lok));
  FunctionProperties panel(*light, {});
  const auto offered = [&] {
    std::string all;
    const auto& entry = get_widget<NameEntry>(panel);
    for (const auto& row : entry.get_completion()->get_model()->children()) {
      Glib::ustring text;
      row.get_value(0, text);
      all += text + ";";
    }
    return all;
  };
  EXPECT_EQ(offered(), "Horn;");
  get_widget<NameEntry>(panel).set_text("Horn²");
  EXPECT_EQ(offered(), "Horn;") << "not what is being typed";
  auto* bell = lok->add(new Function(lok));
  bell->set_name("Bell");
  EXPECT_EQ(offered(), "Bell;Horn;");
  horn->destroy();
  EXPECT_EQ(offered(), "Bell;");
}

TEST_F(PanelTest, a_number_is_rounded_by_no_one_who_passes_through_its_field) {
  auto& decoder = decoder_of(*lok);
  decoder.set_speed_ratio(1.0 / 3);
  const auto panel = panel_of(*lok);
  auto& field = get_widget<DecoderForm>(*panel).ratio();
  field.update();  // as when it is left
  EXPECT_EQ(field.get_value(), 0.333);
  EXPECT_EQ(decoder.get_speed_ratio(), 1.0 / 3);
  field.set_text("0.335");
  field.update();
  EXPECT_EQ(decoder.get_speed_ratio(), 0.335);
}

TEST_F(PanelTest, a_function_keeps_a_type_from_a_file_until_another_is_chosen) {
  auto* function = lok->add(new Function(lok));
  function->set_type(Function::Type::Script);
  FunctionProperties panel(*function, {});
  EXPECT_EQ(panel.type().get_active_text(), "Script Function");
  panel.type().set_active_text("Pulse Function");
  EXPECT_EQ(function->get_type(), Function::Type::Pulse);
  EXPECT_EQ(panel.type().get_model()->children().size(), 2U);
  function->set_type(Function::Type::Toggle);
  EXPECT_EQ(panel.type().get_active_text(), "Toggle Function");
}

TEST_F(PanelTest, a_function_follows_the_decoders_of_its_locomotive) {
  lok->add_decoder();
  auto* function = lok->add(new Function(lok));
  const auto panel = panel_of(*function);
  function->set_decoder(1);
  lok->remove_decoder(0);
  EXPECT_EQ(function->get_decoder(), 0U);
  lok->add_decoder();
  EXPECT_EQ(function->get_decoder(), 0U);
  auto& shown = dynamic_cast<FunctionProperties&>(*panel).decoder();
  decoder_of(*lok).set_address(Address(47));
  EXPECT_EQ(shown.get_active_text(), "Decoder 1 (address 47)");
}

TEST_F(PanelTest, a_picture_is_looked_for_where_the_layout_is) {
  const auto path = folder.file("layout.zblt");
  folder.write("layout.zblt", layout().serialize());
  ASSERT_TRUE(Layout::open(path));
  Gtk::Window window;
  ImageButton button("Picture");
  window.add(button);
  window.show_all();
  button.choose_button().clicked();
  const std::vector<Gtk::Window*> windows = Gtk::Window::list_toplevels();
  const auto chooser = std::ranges::find_if(
      windows, [](auto* one) { return dynamic_cast<Gtk::FileChooser*>(one) != nullptr; });
  ASSERT_NE(chooser, windows.end());
  auto& dialog = dynamic_cast<Gtk::FileChooser&>(**chooser);
  const auto wanted = Glib::path_get_dirname(path);
  for (int turn = 0; turn < 200 && dialog.get_current_folder() != wanted; ++turn) {
    Gtk::Main::iteration(false);
    g_usleep(5000);
  }
  EXPECT_EQ(dialog.get_current_folder(), wanted);
}

TEST_F(PanelTest, a_panel_may_outlive_its_object) {
  auto* function = lok->add(new Function(lok));
  auto* group = layout().get_loks().add(new LokGroup);
  auto* station = layout().get_devices().add(new ECoS);
  std::vector<std::unique_ptr<Gtk::Widget>> panels;
  for (zemblar::Object* object :
       std::initializer_list<zemblar::Object*>{lok, function, group, station}) {
    panels.push_back(panel_of(*object));
  }
  layout().new_document(false);
  for (const auto& panel : panels) {
    get_widget<NameEntry>(*panel).set_text("Late");
    if (auto* check = find_widget<Gtk::CheckButton>(*panel, "")) check->set_active();
    for (const char* name : {"New _Decoder", "New _Function", "New _Locomotive"}) {
      if (auto* button = find_widget<Gtk::Button>(*panel, name)) button->clicked();
    }
  }
  handle_events();
  EXPECT_TRUE(layout().get_loks().empty());
}

TEST_F(PanelTest, a_station_is_made_from_the_menu_and_edited_in_its_panel) {
  DTProps panel(dynamic_cast<DeviceToplevel&>(layout().get_devices()), {});
  auto* item =
      dynamic_cast<Gtk::MenuItem*>(std::vector<Gtk::Widget*>(panel.menu().get_children()).front());
  EXPECT_EQ(item->get_label(), "ESU ECoS");
  item->activate();
  auto& station = dynamic_cast<ECoS&>(*layout().get_devices().child_at(0));
  const auto station_panel = panel_of(station);
  const auto entries = [&] {
    std::vector<Gtk::Entry*> found;
    for (auto* child : dynamic_cast<Gtk::Container&>(*station_panel).get_children()) {
      if (auto* entry = dynamic_cast<Gtk::Entry*>(child)) found.push_back(entry);
    }
    return found;
  }();
  ASSERT_EQ(entries.size(), 2U);
  for (auto* entry : entries) {
    if (entry->get_text() == "localhost") {
      entry->set_text("127.0.0.1:1");
      entry->activate();
    }
  }
  EXPECT_EQ(station.get_host(), "127.0.0.1:1");
  auto& use = get_widget<Gtk::CheckButton>(*station_panel, "_Use as a default DCC Device");
  use.set_active(!station.get_use_as_default());
  EXPECT_EQ(use.get_active(), station.get_use_as_default());
}

TEST_F(PanelTest, a_station_is_looked_for_at_an_address_that_was_typed_to_its_end) {
  simulator::MemoryStation hardware;
  auto* ecos = layout().get_devices().add(new ECoS(hardware.socket()));
  clock.advance(20ms);
  ASSERT_TRUE(ecos->active());
  Gtk::Window window;
  const auto panel = panel_of(*ecos);
  window.add(*panel);
  window.show();
  auto& entry = get_widget<HostEntry>(*panel);
  const auto told = [&] {
    const std::vector<Gtk::Widget*> parts = dynamic_cast<Gtk::Container&>(*panel).get_children();
    return std::ranges::any_of(parts, [](auto* part) {
      const auto* label = dynamic_cast<Gtk::Label*>(part);
      return label && label->get_visible() && label->get_text().raw().starts_with("“localhost” is");
    });
  };
  const std::string other = "ecos.example:15471";
  for (std::size_t length = 1; length <= other.size(); ++length) {
    entry.set_text(other.substr(0, length));
    clock.advance(900ms);
    EXPECT_EQ(ecos->get_host(), "localhost");
    EXPECT_TRUE(told());
  }
  clock.advance(200ms);
  EXPECT_EQ(ecos->get_host(), other);
  EXPECT_EQ(ecos->connected_host(), "localhost");
  EXPECT_TRUE(told());
  get_widget<Gtk::Button>(*panel, "_Reconnect").clicked();
  clock.advance(2s);
  EXPECT_EQ(ecos->connected_host(), other);
  EXPECT_FALSE(told());

  install_layout_dialogs();
  GdkEventFocus out{GDK_FOCUS_CHANGE, entry.get_window()->gobj(), FALSE, FALSE};
  entry.grab_focus();
  const std::pair<const char*, std::function<void()>> ends[] = {
      {"return", [&] { entry.activate(); }},
      {"left", [&] { entry.event(reinterpret_cast<GdkEvent*>(&out)); }},
      {"saved", [] { Layout::dialogs().finish_edits(); }},
      {"reconnected", [&] { get_widget<Gtk::Button>(*panel, "_Reconnect").clicked(); }}};
  for (const auto& [host, finish] : ends) {
    entry.set_text(host);
    finish();
    EXPECT_EQ(ecos->get_host(), host);
  }
  ecos->set_host("elsewhere");
  EXPECT_EQ(entry.get_text(), "elsewhere");
  clock.advance(2s);
  entry.set_text("never");
  layout().get_devices().destroy_children();
  clock.advance(5s);
  window.remove();
  Layout::dialogs() = {};
}

TEST_F(PanelTest, a_li_usb_is_named_and_made_a_default_device_in_its_panel) {
  auto* liusb = layout().get_devices().add(new LIUSB);
  const auto panel = panel_of(*liusb);
  auto& check = get_widget<Gtk::CheckButton>(*panel, "_Use as a default DCC Device");
  EXPECT_TRUE(check.get_active());
  check.set_active(false);
  EXPECT_FALSE(liusb->get_use_as_default());
  liusb->set_use_as_default(true);
  EXPECT_TRUE(check.get_active());
  EXPECT_EQ(get_widget<NameEntry>(*panel).get_text(), "Lenz LI-USB 1");
}

TEST_F(PanelTest, a_bus_is_scanned_from_its_panel) {
  simulator::SerialCable cable;
  simulator::TessaraMaster master(cable);
  const auto port = SerialPortTessara::create({.port_name = "memory"}, cable.plug());
  port->offer();
  clock.advance(1s);
  auto* bus = dynamic_cast<DeviceTessaraBus*>(layout().get_devices().child_at(0));
  ASSERT_TRUE(bus);
  const auto panel = panel_of(*bus);
  auto& scan = get_widget<Gtk::Button>(*panel, "_Scan For Tessara Devices");
  ASSERT_TRUE(scan.is_sensitive());
  scan.clicked();
  EXPECT_TRUE(bus->get_scanning());
  auto* dialog = find_window("Tessara Scan");
  ASSERT_TRUE(dialog);
  auto& bar = get_widget<Gtk::ProgressBar>(*dialog, "Progress of the scan");
  clock.advance(2s);
  EXPECT_GT(bar.get_fraction(), 0.0);
  scan.clicked();
  EXPECT_GT(bus->get_scan_progress(), 0.0) << "the scan goes on";

  get_widget<Gtk::Button>(*dialog, "gtk-cancel").clicked();
  EXPECT_FALSE(bus->get_scanning());
  handle_events();
  EXPECT_FALSE(find_window("Tessara Scan"));

  // One that has been closed is not shown again, though the toolkit still has it.
  scan.clicked();
  get_widget<Gtk::Button>(*find_window("Tessara Scan"), "gtk-cancel").clicked();
  scan.clicked();
  EXPECT_TRUE(bus->get_scanning());
  handle_events();
  EXPECT_TRUE(find_window("Tessara Scan"));
  clock.advance(60s);
  EXPECT_FALSE(bus->get_scanning());
  dialog = find_window("Tessara Scan");
  ASSERT_TRUE(dialog) << "it shows what came of it";
  EXPECT_FALSE(get_widget<Gtk::ProgressBar>(*dialog).get_visible());
  get_widget<Gtk::Button>(*dialog, "gtk-close").clicked();
  bus->destroy();
  handle_events();
  EXPECT_FALSE(find_window("Tessara Scan"));
}

TEST_F(PanelTest, a_reader_looks_locomotives_up_where_its_panel_says) {
  auto* station = layout().get_devices().add(new LIUSB);
  auto* reader = layout().get_devices().add(new DeviceTessaraRailComReader);
  const auto panel = panel_of(*reader);
  EXPECT_EQ(get_widget<NameEntry>(*panel).get_text(), "RailCom Reader 1");
  auto& device = get_widget<ObjectButton>(*panel);
  device.set_object(station);
  EXPECT_EQ(reader->get_dcc_device(), station);
  reader->set_dcc_device(nullptr);
  EXPECT_EQ(device.get_object(), nullptr);
  reader->set_dcc_device(station);
  station->destroy();
  EXPECT_EQ(device.get_object(), nullptr);
}

TEST_F(PanelTest, a_simulated_reader_is_set_up_position_by_position) {
  auto* reader = new DeviceDummyRailComReader;
  reader->set_pattern(0b10000001);
  reader->set_railcom(0b10);
  reader->set_address(Address(5, true));
  auto* station = layout().get_devices().add(new ECoS);
  const auto panel = panel_of(*reader);
  const auto check = [&panel](const char* name) -> Gtk::CheckButton& {
    return get_widget<Gtk::CheckButton>(*panel, name);
  };
  EXPECT_EQ(reader->get_pattern(), 0b10000001);
  EXPECT_TRUE(check("Occupied 8").get_active());
  EXPECT_TRUE(check("RailCom 2").get_active());
  check("Occupied 8").set_active(false);
  check("Occupied 3").set_active();
  check("RailCom 1").set_active();
  EXPECT_EQ(reader->get_pattern(), 0b101);
  EXPECT_EQ(reader->get_railcom(), 0b11);
  check("_Long").set_active(false);
  EXPECT_EQ(reader->get_address(), Address(5));
  get_widget<ObjectButton>(*panel).set_object(station);
  EXPECT_EQ(reader->get_dcc_device(), station);
  reader->set_railcom(0b10000000);
  EXPECT_TRUE(check("RailCom 8").get_active());
  EXPECT_FALSE(check("RailCom 1").get_active());
  station->destroy();
  EXPECT_EQ(reader->get_dcc_device(), nullptr);
  reader->destroy();
  check("Occupied 1").set_active(false);
  clock.advance(std::chrono::milliseconds(1));
}

TEST_F(PanelTest, new_locomotives_and_groups_are_made_where_they_belong) {
  ObjectList list;
  ObjectList other;
  list.select(layout().get_loks());
  other.select(layout());
  const auto all = panel_of(layout().get_loks());
  get_widget<Gtk::Button>(*all, "New Locomotive _Group").clicked();
  auto& group = dynamic_cast<LokGroup&>(*layout().get_loks().child_at(1));
  EXPECT_EQ(list.selected(), &group) << "to be set up next";
  EXPECT_EQ(other.selected(), &layout()) << "where nobody has made it";
  const auto panel = panel_of(group);
  get_widget<Gtk::Button>(*panel, "New _Locomotive").clicked();
  EXPECT_NE(dynamic_cast<Lok*>(group.child_at(0)), nullptr);
  EXPECT_EQ(list.selected(), group.child_at(0));
  layout().get_loks().add(new Lok);
  EXPECT_EQ(list.selected(), group.child_at(0)) << "nobody has pressed a button for that";
}

}  // namespace
}  // namespace zemblar::test

// The driver of a Tessara bus against a simulated master, over a cable in memory.

#include "tests/devices/tessara_fixture.h"

namespace zemblar::test {
namespace {

// --- Hardware comes and goes ---

TEST_F(TessaraTest, makes_a_bus_for_a_new_master_and_knows_it_again) {
  plug_in();
  ASSERT_EQ(1u, layout().get_devices().child_count());
  auto* first = bus();
  EXPECT_EQ("Tessara Bus 1", first->get_name());
  EXPECT_TRUE(first->active());
  EXPECT_EQ("TB-1", first->get_serial_nr());
  EXPECT_THAT(first->get_speeds(), Contains(true));
  EXPECT_EQ(115200u, plugged->cable.settings().baud);
  EXPECT_FALSE(plugged->cable.dtr());

  first->set_name("Under the table");
  pull_plug();
  EXPECT_FALSE(first->active());
  plug_in("TB-2");
  EXPECT_EQ(2u, layout().get_devices().child_count()) << "another piece of hardware";
  EXPECT_FALSE(first->active());
  pull_plug();
  plug_in();
  EXPECT_TRUE(first->active());
  EXPECT_EQ(2u, layout().get_devices().child_count());

  // Offered once more, as after opening a layout: it is held.
  plugged->port->offer();
  clock.advance(1s);
  EXPECT_EQ(2u, layout().get_devices().child_count());
  EXPECT_EQ("Tessara Bus 1 is not plugged in.", get_status()) << "the second one";
}

TEST_F(TessaraTest, says_what_is_wrong_with_a_port_and_tries_again) {
  using Fault = std::function<void(Plugged&)>;
  const struct {
    const char* said;
    Fault fault, end;
  } cases[] = {
      {"may not use the port ttyUSB0", [](Plugged& p) { p.cable.refusal = EACCES; },
       [](Plugged& p) { p.cable.refusal = 0; }},
      {"port ttyUSB0: another program is using it", [](Plugged& p) { p.cable.refusal = EBUSY; },
       [](Plugged& p) { p.cable.refusal = 0; }},
      {"port ttyUSB0: Input/output error", [](Plugged& p) { p.cable.refusal = EIO; },
       [](Plugged& p) { p.cable.refusal = 0; }},
      {"ttyUSB0 does not answer as a Tessara device does",
       [](Plugged& p) { p.master.options.kind = "ODD!"; },
       [](Plugged& p) { p.master.options.kind = "BUS\0"s; }},
  };
  for (const auto& c : cases) {
    for (const bool pulled_out : {true, false}) {
      plugged = std::make_unique<Plugged>();
      c.fault(*plugged);
      plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
      plugged->port->offer();
      clock.advance(12s);
      EXPECT_THAT(get_status(), HasSubstr(c.said));
      EXPECT_TRUE(layout().get_devices().empty());
      if (pulled_out) {
        const auto held = plugged->port;
        pull_plug();
        EXPECT_EQ("", get_status()) << c.said;
        continue;
      }
      c.end(*plugged);
      clock.advance(6s);
      EXPECT_EQ("", get_status()) << c.said;
      ASSERT_EQ(1u, layout().get_devices().child_count()) << c.said;
      EXPECT_TRUE(bus()->active()) << c.said;
      pull_plug();
      bus()->destroy();
    }
  }
}

TEST_F(TessaraTest, tells_a_lasting_trouble_once) {
  plugged = std::make_unique<Plugged>();
  plugged->master.options.kind = "ODD!";
  plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
  int said = 0;
  const ScopedConnection noted = signal_status_changed().connect([&] { ++said; });
  plugged->port->offer();
  clock.advance(5s);
  const int at_first = std::exchange(said, 0);
  EXPECT_GE(at_first, 1);
  clock.advance(30s);
  EXPECT_EQ(0, said);
}

TEST_F(TessaraTest, comes_back_by_itself_from_a_failed_start) {
  plug_in();
  pull_plug();
  plugged = std::make_unique<Plugged>();
  plugged->master.options.serial_nr = "TB-1";
  plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
  plugged->port->offer();
  while (!plugged->port->is_held() || !bus()->active()) clock.advance(1ms);
  plugged->master.faults.silent = true;
  clock.advance(3s);
  EXPECT_FALSE(bus()->active());
  EXPECT_THAT(get_status(), HasSubstr("does not answer"));
  plugged->master.faults.silent = false;
  clock.advance(2s);
  EXPECT_TRUE(bus()->active());
  EXPECT_EQ("", get_status());
  EXPECT_EQ(1u, layout().get_devices().child_count());
}

TEST_F(TessaraTest, takes_noise_on_the_line_for_no_part_of_an_identity) {
  for (int moment = 0; moment < 600; ++moment) {
    SCOPED_TRACE(moment);
    plugged = std::make_unique<Plugged>();
    plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
    plugged->port->offer();
    const auto noise =
        Timeout::once(std::chrono::milliseconds(moment), [this] { plugged->cable.send("\xfe"); });
    clock.advance(8s);
    ASSERT_EQ(1u, layout().get_devices().child_count());
    EXPECT_TRUE(bus()->active());
    EXPECT_EQ(plugged->master.options.serial_nr, bus()->get_serial_nr());
    pull_plug();
    bus()->destroy();
  }
}

TEST_F(TessaraTest, makes_no_second_device_of_hardware_that_an_error_hid_from_its_own) {
  plug_in();
  pull_plug();
  plugged = std::make_unique<Plugged>();
  plugged->master.options.serial_nr = "TB-1";
  plugged->master.faults.errors = 1;
  plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
  plugged->port->offer();
  clock.advance(2s);
  EXPECT_EQ(1u, layout().get_devices().child_count());
  EXPECT_TRUE(bus()->active());
}

TEST_F(TessaraTest, gives_new_hardware_to_the_layout_that_is_opened_meanwhile) {
  plug_in();
  const auto with_bus = layout().serialize();
  for (int moment = 0; moment < 300; moment += 10) {
    pull_plug();
    if (moment % 20 == 0) layout().new_document(false);
    plugged = std::make_unique<Plugged>();
    plugged->master.options.serial_nr = "TB-1";
    plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
    plugged->port->offer();
    clock.advance(std::chrono::milliseconds(moment));
    ASSERT_TRUE(Layout::open_bytes(folder.file("bus.zblt"), with_bus));
    plugged->port->offer();
    clock.advance(2s);
    EXPECT_EQ(1u, layout().get_devices().child_count()) << moment;
    EXPECT_TRUE(bus()->active()) << moment;
  }
}

TEST_F(TessaraTest, leaves_a_line_that_fails) {
  plug_in();
  for (const int loss : {EIO, ENODEV, ENXIO}) {
    plugged->cable.loss = loss;
    plugged->cable.unplug();  // and nobody says so
    EXPECT_THAT(result_of([] { return bus()->read_serial(); }), StartsWith("failed"));
    EXPECT_FALSE(bus()->active()) << loss;
    pull_plug();
    plug_in();
    EXPECT_TRUE(bus()->active()) << loss;
  }
}

TEST_F(TessaraTest, returns_to_a_line_that_was_lost_while_the_system_saw_nothing_of_it) {
  SerialCable cable;
  const TessaraMaster far_end(cable);
  auto hardware = std::make_unique<simulator::MemoryHardware>();
  hardware->plug_in(record, [&] { return cable.plug(); });
  HWList list(std::move(hardware));
  list.rescan();
  clock.advance(1s);
  ASSERT_TRUE(bus() && bus()->active());
  cable.unplug();
  result_of([] { return bus()->read_serial(); });
  EXPECT_TRUE(bus()->active());
  EXPECT_EQ("", get_status());
}

// --- The link ---

TEST_F(TessaraTest, tells_how_its_link_is_at_each_step_of_its_life) {
  const DetachedPtr<DeviceTessaraBus> unknown(
      new DeviceTessaraBus(YAML::Load("{name: Old, serial-nr: ''}")));
  walk(clock, *unknown,
       {{"saved without a number", [] {}, 1s, LinkPhase::not_set_up, 1s, "has no serial number",
         "has no serial number"}});
  clear_status();

  auto* yard =
      layout().get_devices().add(new DeviceTessaraBus(YAML::Load("{name: Yard, serial-nr: TB-1}")));
  const auto ask_for = [&](std::chrono::milliseconds time) {
    for (; time > 0ms; time -= 100ms) {
      result_of([&] { return std::to_string(yard->get_speed(7)); }, 100ms);
    }
  };
  const std::string absent = "Yard is not plugged in.";
  const std::string silent = "Yard does not answer: has it power?";
  walk(
      clock, *yard,
      {{"from a file", [] {}, 3s, LinkPhase::looking_for_hardware, 3s, absent, ""},
       {"plugged in, and silent as soon as it is known",
        [&] {
          plug_in("TB-1", {}, 0ms);
          while (!plugged->port->is_held() || !yard->active()) clock.advance(1ms);
          master().faults.silent = true;
        },
        2s, LinkPhase::connecting, 2s, silent, silent},
       {"it answers", [&] { master().faults = {}; }, 5s, LinkPhase::in_service, 4876ms, "", ""},
       {"silent again", [&] { master().faults.silent = true, ask_for(900ms); }, 0ms,
        LinkPhase::in_service, 5776ms, "", ""},
       {"for more than a second", [&] { ask_for(300ms); }, 0ms, LinkPhase::waiting_for_answer,
        1170ms, silent, silent},
       {"the answer", [&] { master().faults = {}, ask_for(100ms); }, 0ms, LinkPhase::in_service,
        68ms, "", "Yard answers again."},
       {"an answer without an end", [&] { master().faults.endless = true, ask_for(600ms); }, 0ms,
        LinkPhase::waiting_for_answer, 100ms, "does not come to an end", "does not come to an end"},
       {"which ends", [&] { master().end_faults(), ask_for(1s); }, 0ms, LinkPhase::in_service,
        993ms, "", "Yard answers again."},
       {"the cable fails", [&] { plugged->cable.unplug(), ask_for(100ms); }, 0ms, LinkPhase::lost,
        100ms, "has lost its port ttyUSB0", "has lost its port ttyUSB0"},
       {"and does not come back", [] {}, 1s, LinkPhase::lost, 1100ms,
        "cannot open the port ttyUSB0", "cannot open the port ttyUSB0"},
       {"as the system tells", [&] { pull_plug(); }, 1s, LinkPhase::lost, 2100ms, absent, absent},
       {"plugged in again", [&] { plug_in(); }, 0ms, LinkPhase::in_service, 904ms, "", ""}});
}

TEST_F(TessaraTest, tells_how_the_link_to_a_device_on_the_bus_is) {
  auto* yard = layout().get_devices().add(new DeviceTessaraBus(
      YAML::Load("{name: Yard, id: 0, serial-nr: TB-1, devices: [!<!device/Tessara/GADG> "
                 "{name: Lamp, id: 1, address: 7, serial-nr: G-1}]}")));
  GadgetHardware hardware("G-2");
  const std::string absent = "Lamp does not answer at address 7 of Yard.";
  const std::string unplugged = "Yard is not plugged in.";
  walk(
      clock, *dynamic_cast<Gadget*>(yard->child_at(0)),
      {{"from a file", [] {}, 1s, LinkPhase::looking_for_hardware, 1s,
        "Lamp waits until its bus is in service.", ""},
       {"with a bus", [&] { plug_in(); }, 2s, LinkPhase::looking_for_hardware, 4s, absent, ""},
       {"another one in its place", [&] { master().attach(7, hardware); }, 3s,
        LinkPhase::connecting, 2648ms, "Lamp stays out of service: Another device",
        "Lamp stays out of service: Another device"},
       {"the right one", [&] { hardware.serial = "G-1"; }, 5s, LinkPhase::in_service, 4328ms, "",
        ""},
       {"without a bus", [&] { pull_plug(); }, 2s, LinkPhase::lost, 2s, "", unplugged},
       {"with a bus again, and away itself", [&] { plug_in(); }, 5s, LinkPhase::lost, 8s, absent,
        absent},
       {"back", [&] { master().attach(7, hardware); }, 5s, LinkPhase::in_service, 4232ms, "", ""}});
}

// --- The monitor ---

TEST_F(TessaraTest, looks_for_a_lost_device_once_a_second_however_often_the_bus_has_come_back) {
  plug_in();
  bus()->add(new Gadget(bus(), 7));
  for (int i = 0; i < 3; ++i) {
    bus()->go_out_of_service();
    clock.advance(100ms);
    bus()->set_active(true);
    clock.advance(500ms);
  }
  static_cast<void>(master().take_messages(7));
  clock.advance(10s);
  EXPECT_THAT(master().take_messages(7),
              testing::SizeIs(testing::AllOf(testing::Ge(8u), testing::Le(10u))));
}

TEST_F(TessaraTest, brings_back_devices_that_were_lost) {
  GadgetHardware hardware("G-1", 0);
  gadgets = {{7, hardware}};
  plug_in();
  auto* gadget = bus()->add(new Gadget(bus(), 7));
  clock.advance(2s);
  EXPECT_TRUE(gadget->active());
  EXPECT_EQ("G-1", gadget->get_serial_nr());
  result_of([&] {
    gadget->set_speed(3);
    return "";
  });
  EXPECT_EQ(3u, hardware.at_speed);
  EXPECT_EQ(3u, master().speed(7));

  hardware.restart();
  gadget->give_up("");
  clock.advance(2s);
  EXPECT_TRUE(gadget->active());
  EXPECT_EQ(0u, master().speed(7));

  hardware.serial = "G-2";
  gadget->give_up("");
  clock.advance(5s);
  EXPECT_FALSE(gadget->active()) << "another device at its address";
  EXPECT_THAT(get_status(), HasSubstr("Gadget 1"));
  hardware.serial = "G-1";
  clock.advance(2s);
  EXPECT_TRUE(gadget->active());
  EXPECT_EQ("", get_status());

  pull_plug();
  EXPECT_FALSE(gadget->active());
  plug_in();
  clock.advance(2s);
  EXPECT_TRUE(gadget->active());
}

// --- Addresses and the file ---

TEST_F(TessaraTest, gives_each_device_an_address_of_its_own) {
  plug_in();
  auto* one = bus()->add(new Gadget(bus(), 1));
  one->set_address(7);
  auto* two = bus()->add(new Gadget(bus(), 2));
  two->set_address(7);
  EXPECT_EQ(2, two->get_address());
  two->set_address(1);
  EXPECT_EQ(1, two->get_address());
  one->destroy();
  two->set_address(7);
  EXPECT_EQ(7, two->get_address());
}

TEST_F(TessaraTest, comes_out_of_a_file_as_it_went_in) {
  const std::string text =
      "%YAML 1.2\n"
      "title: Test\n"
      "objects:\n"
      "  - !device/Tessara/BUS\n"
      "    name: Main Bus\n"
      "    id: 0\n"
      "    serial-nr: TB-1\n"
      "    devices:\n"
      "      - !device/Tessara/GADG\n"
      "        name: Gadget 1\n"
      "        id: 1\n"
      "        address: 255\n"
      "        serial-nr: !!binary \"AP8B\"\n"
      "      - !device/Tessara/BUS\n"
      "        name: Branch\n"
      "        id: 2\n"
      "        address: 3\n"
      "        serial-nr: \"\"\n";
  const auto path = folder.write("bus.zblt", text);
  ASSERT_TRUE(layout().open(path)) << get_status();
  layout().save();
  EXPECT_EQ(text, test::bytes_of(path));
  EXPECT_FALSE(bus()->mark_used(255));
  EXPECT_EQ("\0\xff\1"s, dynamic_cast<Gadget*>(bus()->child_at(0))->get_serial_nr());

  // The hardware is known again by its number alone.
  plug_in();
  EXPECT_TRUE(bus()->active());
  EXPECT_EQ(1u, layout().get_devices().child_count());

  for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {"address: 255", "address: 256"},
           {"Tessara/GADG", "Tessara/WHAT"},
           {"serial-nr: TB-1", "serial-nr: TB-1\n    address: 1"},
           {"\"AP8B\"", "\"A\""}}) {
    auto damaged = text;
    damaged.replace(damaged.find(from), from.size(), to);
    EXPECT_FALSE(layout().open(folder.write("damaged.zblt", damaged))) << to;
    EXPECT_THAT(get_status(), HasSubstr("Couldn't open"));
  }
}

// --- The end may come at any moment ---

TEST_F(TessaraTest, survives_the_end_of_anything_at_any_moment) {
  GadgetHardware hardware("G-1", 0);
  gadgets = {{7, hardware}};
  const std::vector<std::function<void()>> ends = {
      [] { bus()->destroy(); },
      [] {
        if (auto* gadget = bus()->child_at(0)) gadget->destroy();
      },
      [this] { pull_plug(); },
      [] { bus()->go_out_of_service(); },
  };
  for (const auto& end : ends) {
    for (int moment = 0; moment < 260; moment += 7) {
      plug_in();
      auto* gadget = bus()->add(new Gadget(bus(), 7));
      fiber::spawn([bus = bus()] { bus->relay(7, "hello"); });
      fiber::spawn([gadget] { gadget->find_on_bus(); });
      gadget->set_active(true);
      bus()->set_scanning(true);
      clock.advance(std::chrono::milliseconds(moment));
      end();
      clock.advance(300ms);
      if (plugged->port) pull_plug();
      layout().get_devices().destroy_children();
      clock.advance(300ms);
    }
  }
}

TEST_F(TessaraTest, survives_the_end_of_anything_while_hardware_is_asked_what_it_is) {
  for (int moment = 0; moment < 400; moment += 5) {
    for (const int end : {0, 1, 2}) {
      plug_in();  // one that waits for its hardware
      pull_plug();
      plugged = std::make_unique<Plugged>();
      plugged->master.options.serial_nr = moment % 2 == 0 ? "TB-1" : "TB-9";
      plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
      plugged->port->offer();
      clock.advance(std::chrono::milliseconds(moment));
      if (end == 0) pull_plug();
      if (end == 1) layout().get_devices().destroy_children();
      if (end == 2) layout().new_document(false);
      clock.advance(500ms);
      if (plugged->port) pull_plug();
      layout().get_devices().destroy_children();
      clock.advance(300ms);
    }
  }
}

}  // namespace
}  // namespace zemblar::test

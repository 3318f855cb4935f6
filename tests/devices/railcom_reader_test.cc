#include <gmock/gmock.h>

#include <utility>

#include "devices/default_device.h"
#include "devices/tessara/device_tessara_bus.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "devices/tessara/serial_port_tessara.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"
#include "simulator/bus/reader_hardware.h"
#include "simulator/bus/tessara_master.h"
#include "simulator/trains/railcom_encoder.h"
#include "support/layout_fixture.h"
#include "support/link_steps.h"
#include "track/zone.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using simulator::RailComEncoder;
using simulator::ReaderHardware;
using simulator::SerialCable;
using simulator::TessaraMaster;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::SizeIs;
using Reader = DeviceTessaraRailComReader;

const HWDevice record{.hardware_ids = {"USB\\VID_16D0&PID_064D"}, .port_name = "ttyUSB0"};
constexpr std::uint8_t address = 3;

/// A bus with one reader, from the wire to the inputs.
class RailComReaderTest : public test::LayoutTest {
 protected:
  RailComReaderTest() {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_name("V60");
    layout().get_default_device().add_lok(Address(60), lok);
    attach(8);
  }
  ~RailComReaderTest() override {
    layout().get_devices().destroy_children();
    clock.advance(3s);
  }

  /// A piece of hardware with so many inputs, in place of the one that is there.
  void attach(unsigned inputs) {
    hardware = std::make_unique<ReaderHardware>(inputs);
    master.attach(address, *hardware);
  }
  void plug_in() {
    port = SerialPortTessara::create(record, cable.plug());
    port->offer();
    clock.advance(5s);
  }
  /// What a scan of the first addresses finds.
  Reader* find_reader() {
    plug_in();
    bus()->set_scanning(true);
    clock.advance(20s);
    bus()->set_scanning(false);
    return reader();
  }
  static DeviceTessaraBus* bus() {
    return dynamic_cast<DeviceTessaraBus*>(layout().get_devices().child_at(0));
  }
  static Reader* reader() {
    return bus()->empty() ? nullptr : dynamic_cast<Reader*>(bus()->child_at(0));
  }

  /// A train that answers on the input's track, or that has left it.
  void occupy(unsigned input, unsigned side = 1) {
    hardware->input(input).set_current(true, side);
    hardware->input(input).receive(simulator::idle_packet(), RailComEncoder::datagram(1, 0));
    hardware->input(input).receive(simulator::idle_packet(), RailComEncoder::datagram(2, 60));
  }
  static std::string occupied() {
    std::string numbers;
    for (std::size_t i = 0; i < reader()->inputs().size(); ++i) {
      if (reader()->inputs()[i]->occupied()) numbers += std::to_string(i);
    }
    return numbers;
  }
  static std::size_t active_inputs() {
    std::size_t count = 0;
    for (const auto* input : reader()->inputs()) count += input && input->active();
    return count;
  }
  /// Saved and opened again. False when that changes the bytes.
  bool reopen() {
    const auto before = layout().serialize();
    if (!Layout::open_bytes(folder.file("layout.zblt"), before)) return false;
    clock.advance(0s);
    return layout().serialize() == before;
  }

  VirtualClock clock;
  SerialCable cable;
  TessaraMaster master{cable};
  std::unique_ptr<ReaderHardware> hardware;
  Glib::RefPtr<SerialPortTessara> port;
};

TEST_F(RailComReaderTest, is_found_and_tells_where_trains_are) {
  hardware->options.speeds = {0b01001};
  auto* found = find_reader();
  ASSERT_TRUE(found && found->active());
  EXPECT_EQ(found->get_name(), "RailCom Reader 1");
  EXPECT_EQ(hardware->speed(), 3u);
  EXPECT_EQ(master.speed(address), 3u);
  EXPECT_EQ(active_inputs(), 8u);
  EXPECT_EQ(found->inputs()[7]->get_name(), "Input 8");

  static_cast<void>(master.take_messages(address));
  occupy(2, 2);
  hardware->input(7).set_current(true);
  clock.advance(1s);
  EXPECT_EQ(occupied(), "27");
  EXPECT_EQ(found->inputs()[2]->orientation(), 2u);
  EXPECT_THAT(found->inputs()[2]->detected(), SizeIs(1));
  EXPECT_THAT(master.take_messages(address), AllOf(Each("0a"), SizeIs(Ge(7u))));
  hardware->input(2).set_current(false);
  hardware->input(7).set_current(false);
  clock.advance(5s);
  EXPECT_EQ(occupied(), "");
}

TEST_F(RailComReaderTest, keeps_what_it_saw_while_it_is_lost_and_comes_back) {
  auto* lost = find_reader();
  ASSERT_TRUE(lost);
  const struct {
    const char* what;
    std::function<void()> fault;
    std::function<void()> end;
  } cases[] = {
      {"taken off the bus", [this] { master.detach(address); },
       [this] { master.attach(address, *hardware); }},
      {"restarted", [this] { hardware->restart(); }, [] {}},
      {"short answers", [this] { hardware->faults.missing_end = 1; },
       [this] { hardware->faults.missing_end = 0; }},
      {"nonsense", [this] { hardware->faults.garbage = "\x3f"; },
       [this] { hardware->faults.garbage.clear(); }},
      {"refused frames", [this] { master.faults.errors = 4; }, [] {}},
  };
  for (const auto& c : cases) {
    unsigned falls = 0;
    const ScopedConnection notice = lost->property_active().signal_changed().connect([&] {
      if (!lost->active()) ++falls;
    });
    occupy(5);
    clock.advance(400ms);
    ASSERT_EQ(occupied(), "5") << c.what;
    c.fault();
    hardware->input(5).set_current(false);
    clock.advance(3s);
    EXPECT_GE(falls, 1u) << c.what;
    if (!lost->active()) {
      EXPECT_EQ(active_inputs(), 0u) << c.what;
      EXPECT_EQ(occupied(), "5") << c.what;
    }
    c.end();
    clock.advance(8s);
    EXPECT_TRUE(lost->active()) << c.what;
    EXPECT_EQ(active_inputs(), 8u) << c.what;
    EXPECT_EQ(occupied(), "") << c.what;
  }
}

// It may have heard a change of speed to which the bus could not follow.
TEST_F(RailComReaderTest, comes_back_whichever_exchange_of_its_return_fails) {
  auto* lost = find_reader();
  ASSERT_TRUE(lost);
  for (int moment = 0; moment < 2000; moment += 20) {
    hardware->restart();
    clock.advance(std::chrono::milliseconds(moment));
    master.faults.errors = 1;
    clock.advance(100ms);
    master.faults.errors = 0;
    clock.advance(5s);
    EXPECT_TRUE(lost->active()) << moment;
    EXPECT_EQ(hardware->speed(), 4u) << moment;
  }
}

TEST_F(RailComReaderTest, tells_with_its_inputs_how_its_link_is) {
  ASSERT_TRUE(find_reader());
  ASSERT_TRUE(reopen());
  const std::string silent = "RailCom Reader 1 does not answer at address 3 of Tessara Bus 1.";
  const std::string odd = "RailCom Reader 1 says what the program does not understand.";
  const std::string silent_bus = "Tessara Bus 1 does not answer: has it power?";
  const std::vector<test::LinkStep> steps = {
      {"from a file", [] {}, 1s, LinkPhase::looking_for_hardware, 1s, "waits until its bus", ""},
      {"with its bus", [&] { plug_in(); }, 0ms, LinkPhase::in_service, 3490ms, "", ""},
      {"busy for ever", [&] { master.faults.never_done = true; }, 1500ms,
       LinkPhase::waiting_for_answer, 1520ms, silent, silent},
      {"given up", [] {}, 3s, LinkPhase::lost, 2520ms, silent, silent},
      {"mended", [&] { master.faults = {}; }, 5s, LinkPhase::in_service, 4166ms, "", ""},
      {"out of order",
       [&] {
         hardware->faults.garbage = "\x3f";
         while (reader()->active()) clock.advance(1ms);
       },
       1ms, LinkPhase::lost, 1ms, odd, odd},
      {"and its bus silent",
       [&] {
         hardware->faults.garbage.clear();
         master.faults.silent = true;
       },
       3s, LinkPhase::lost, 3001ms, odd, silent_bus},
      {"all well", [&] { master.faults = {}; }, 5s, LinkPhase::in_service, 3705ms, "", ""},
  };
  for (const auto& step : steps) {
    test::walk(clock, *reader(), {step});
    const auto& link = reader()->link_state();
    for (const auto* input : reader()->inputs()) {
      EXPECT_EQ(input->link_state().phase, link.phase) << step.name;
      EXPECT_EQ(input->link_state().since, link.since) << step.name;
    }
  }
}

TEST_F(RailComReaderTest, takes_no_detector_from_a_block_because_noise_has_changed_an_answer) {
  auto* lost = find_reader();
  ASSERT_TRUE(lost);
  auto* zone = layout().get_blocks().add(new Zone);
  zone->set_input(lost->inputs()[7]);
  hardware->restart();
  while (lost->active()) clock.advance(1ms);
  while (!lost->active()) clock.advance(1ms);  // about to ask for the info block
  ReaderHardware smaller(4);                   // what an answer with another byte in it says
  master.attach(address, smaller);
  clock.advance(60ms);
  master.attach(address, *hardware);
  clock.advance(5s);
  EXPECT_TRUE(lost->active());
  EXPECT_TRUE(zone->get_input());
}

TEST_F(RailComReaderTest, has_as_many_inputs_as_its_hardware_and_each_keeps_its_track) {
  auto* changed = find_reader();
  ASSERT_TRUE(changed);
  const auto kept = changed->inputs();
  for (const unsigned count : {11u, 4u, 8u}) {
    attach(count);
    clock.advance(5s);
    ASSERT_TRUE(changed->active()) << count;
    ASSERT_EQ(changed->inputs().size(), count);
    EXPECT_EQ(changed->child_count(), count);
    EXPECT_EQ(active_inputs(), count);
    EXPECT_THAT(std::vector(kept.begin(), kept.begin() + 4), IsSubsetOf(changed->inputs()));
    occupy(count - 1);
    clock.advance(500ms);
    EXPECT_EQ(occupied(), std::to_string(count - 1));
  }
}

TEST_F(RailComReaderTest, fills_the_place_of_an_input_that_somebody_ends) {
  auto* mended = find_reader();
  ASSERT_TRUE(mended);
  occupy(1, 2);
  clock.advance(300ms);
  auto* neighbour = mended->inputs()[2];
  // In the middle of an answer, in which its place must still be counted.
  const ScopedConnection end = mended->inputs()[1]->signal_changed().connect([mended] {
    if (auto* input = mended->inputs()[1]) input->destroy();
  });
  hardware->input(1).set_current(true, 1);
  occupy(2);
  clock.advance(300ms);
  EXPECT_TRUE(mended->active());
  EXPECT_EQ(mended->inputs()[2], neighbour);
  EXPECT_EQ(occupied(), "12");
  EXPECT_EQ(mended->inputs()[1]->orientation(), 1u) << "the new one knows what is told of it";
  EXPECT_EQ(active_inputs(), 8u);
}

TEST_F(RailComReaderTest, stays_with_its_blocks_in_a_file) {
  auto* saved = find_reader();
  ASSERT_TRUE(saved);
  auto* zone = layout().get_blocks().add(new Zone);
  zone->set_input(saved->inputs()[5]);
  saved->inputs()[0]->destroy();
  saved->inputs()[4]->destroy();
  ASSERT_EQ(saved->inputs()[4], nullptr);
  ASSERT_TRUE(reopen());
  EXPECT_THAT(layout().serialize(), AllOf(HasSubstr("        name: RailCom Reader 1\n"),
                                          HasSubstr("serial-nr: RR-0001")));

  ASSERT_THAT(reader()->inputs(), SizeIs(8));
  EXPECT_FALSE(reader()->active());
  plug_in();
  ASSERT_TRUE(reader()->active());
  occupy(5);
  clock.advance(500ms);
  EXPECT_EQ(occupied(), "5");
  zone = dynamic_cast<Zone*>(layout().get_blocks().child_at(0));
  EXPECT_EQ(zone->get_input(), reader()->inputs()[5]);
  EXPECT_TRUE(zone->occupied());
}

TEST_F(RailComReaderTest, reads_inputs_that_nobody_refers_to) {
  const std::string file =
      "%YAML 1.2\n"
      "title: Readers\n"
      "objects:\n"
      "  - !device/Tessara/BUS\n"
      "    name: Tessara Bus 1\n"
      "    id: 0\n"
      "    serial-nr: TB-0001\n"
      "    devices:\n"
      "      - !device/Tessara/QVRN\n"
      "        name: RailCom Reader 1\n"
      "        id: 1\n"
      "        address: 3\n"
      "        serial-nr: RR-0001\n"
      "        inputs:";
  const struct {
    const char* inputs;
    std::size_t count;
    const char* written;
  } cases[] = {
      {" []\n", 0, "\n          []\n"},
      {"\n          - ~\n          - {}\n          - id: 9\n", 3,
       "\n          - id: 2\n          - id: 3\n          - id: 4\n"},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(Layout::open_bytes(folder.file("layout.zblt"), file + c.inputs)) << get_status();
    EXPECT_EQ(reader()->inputs().size(), c.count);
    EXPECT_EQ(layout().serialize(), file + c.written);
  }
}

TEST_F(RailComReaderTest, uses_the_encoding_that_says_something) {
  const struct {
    std::uint8_t offered;
    bool used;
    const char* seen;
  } cases[] = {{0b11, true, "0"}, {0b10, true, ""}, {0b100, false, ""}};
  plug_in();
  for (const auto& c : cases) {
    attach(2);
    hardware->options.encodings = c.offered;
    bus()->set_scanning(true);
    clock.advance(20s);
    bus()->set_scanning(false);
    ASSERT_EQ(c.used, reader() && reader()->active()) << int{c.offered};
    if (!c.used) continue;
    occupy(0);
    clock.advance(1s);
    EXPECT_EQ(c.seen, occupied());
    reader()->destroy();
  }
}

TEST_F(RailComReaderTest, tells_its_hardware_what_to_listen_to) {
  auto* commanded = find_reader();
  ASSERT_TRUE(commanded);
  std::vector<bool> all_but_the_last(8, true);
  all_but_the_last[7] = false;
  const struct {
    std::function<void()> command;
    const char* outcome;
    const char* occupied;
  } cases[] = {
      {[=] { commanded->enable_inputs(std::vector<bool>(7)); }, "Incorrect Vector Size", "07"},
      {[=] { commanded->enable_inputs(all_but_the_last); }, "", "0"},
      {[=] { commanded->set_encoding(1); }, "Unsupported Encoding", "0"},
      {[=] { commanded->set_encoding(0); }, "", "0"},
  };
  for (const auto& c : cases) {
    hardware->input(0).set_current(true);
    hardware->input(7).set_current(true);
    std::string outcome = "waiting";
    fiber::spawn([&] {
      try {
        c.command();
        outcome.clear();
      } catch (const std::exception& error) {
        outcome = error.what();
      }
    });
    clock.advance(2s);
    EXPECT_EQ(outcome, c.outcome);
    EXPECT_EQ(occupied(), c.occupied);
  }
}

}  // namespace
}  // namespace zemblar

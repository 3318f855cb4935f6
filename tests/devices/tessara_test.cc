// The driver of a Tessara bus against a simulated master, over a cable in memory.

#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include "core/toplevel.h"
#include "devices/device_tessara_bus.h"
#include "devices/hw_list.h"
#include "devices/serial_port_tessara.h"
#include "devices/tessara_class.h"
#include "runtime/fiber.h"
#include "simulator/memory_hardware.h"
#include "simulator/tessara_master.h"
#include "support/layout_fixture.h"
#include "support/link_steps.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using simulator::SerialCable;
using simulator::TessaraMaster;
using test::walk;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// What hangs on the bus in these tests: tells what it is and echoes the rest.
class GadgetHardware : public simulator::TessaraDevice {
 public:
  explicit GadgetHardware(std::string serial_nr = "G-1", unsigned speed = 0)
      : serial(std::move(serial_nr)), at_speed(speed) {}

  [[nodiscard]] unsigned speed() const override { return at_speed; }
  std::optional<std::string> execute(std::string_view message) override {
    if (message == "\0"s) return simulator::tessara_info("GADG", {0x1f});
    if (message == "\2"s) return serial;
    if (message.starts_with('\4')) at_speed = static_cast<unsigned char>(message[1]);
    return message.starts_with('\4') ? "" : std::string(message);
  }
  void restart() override { at_speed = 0; }

  std::string serial;
  unsigned at_speed;
};

/// The driver of one.
class Gadget : public DeviceTessara {
 public:
  Gadget() : Gadget(nullptr, 0) {}
  Gadget(DeviceTessaraBus* bus, std::uint8_t address)
      : Glib::ObjectBase("Gadget"), DeviceTessara("Gadget %1", bus, address) {}
  explicit Gadget(const YAML::Node& node, DeviceTessaraBus* bus = nullptr)
      : Glib::ObjectBase("Gadget"), DeviceTessara("Gadget %1", node, bus) {}
  void save(YAML::Emitter& out) const override {
    out << YAML::LocalTag("device/Tessara/GADG") << YAML::BeginMap;
    save_tessara(out);
    out << YAML::EndMap;
  }
  using DeviceTessara::give_up;

 protected:
  bool start() override {
    return bring_up([](const std::string&) {});
  }
};

const TessaraRegistration<Gadget> registration("GADG", [](DeviceTessara* device) {
  return probe_by_info(device, "GADG");
});

const HWDevice record{.hardware_ids = {"usb\\vid_16d0&pid_064d"}, .port_name = "ttyUSB0"};

class TessaraTest : public test::LayoutTest {
 protected:
  ~TessaraTest() override {
    layout().get_devices().destroy_children();
    clock.advance(10s);
  }

  /// A master that is plugged in, as discovery tells it.
  struct Plugged {
    SerialCable cable{};
    TessaraMaster master{cable};
    Glib::RefPtr<SerialPortTessara> port{};
  };
  Plugged& plug_in(const std::string& serial = "TB-1", TessaraMaster::Options options = {},
                   std::chrono::milliseconds time = 1s) {
    plugged = std::make_unique<Plugged>();
    options.serial_nr = serial;
    plugged->master.options = options;
    for (auto& [address, hardware] : gadgets) plugged->master.attach(address, hardware);
    plugged->port = SerialPortTessara::create(record, plugged->cable.plug());
    plugged->port->offer();
    clock.advance(time);
    return *plugged;
  }
  void pull_plug() {
    plugged->cable.unplug();
    plugged->port->remove();
    plugged->port.reset();
    clock.advance(0ms);
  }
  static DeviceTessaraBus* bus(unsigned n = 0) {
    return dynamic_cast<DeviceTessaraBus*>(layout().get_devices().child_at(n));
  }
  TessaraMaster& master() { return plugged->master; }

  /// What a call on a fiber has come to: its result, or "failed: " and why.
  template <typename Call>
  std::string result_of(const Call& call, std::chrono::milliseconds time = 10s) {
    auto result = std::make_shared<std::string>("nothing");
    fiber::spawn([result, call] {
      try {
        *result = call();
      } catch (const std::exception& error) {
        *result = "failed: "s + error.what();
      }
    });
    clock.advance(time);
    return *result;
  }

  VirtualClock clock;
  std::map<std::uint8_t, GadgetHardware&> gadgets;
  std::unique_ptr<Plugged> plugged;
};

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
  list.look();
  clock.advance(1s);
  ASSERT_TRUE(bus() && bus()->active());
  cable.unplug();
  result_of([] { return bus()->read_serial(); });
  EXPECT_TRUE(bus()->active());
  EXPECT_EQ("", get_status());
}

// --- The wire ---

/// A master that says what it is told to say.
class Wire {
 public:
  struct Answer {
    std::string bytes{};
    bool error = false;
    bool endless = false;  // DSR stays up
    bool late = false;     // DSR falls before the bytes have come through
  };
  explicit Wire(SerialCable& cable) : cable_(cable) {
    cable.on_bytes([this](std::string_view bytes) { frame_ += bytes; });
    cable.on_dtr([this](bool up) { up ? begin() : answer(); });
  }

  std::map<std::string, Answer> answers = {{"\0"s, {"BUS\0\0\1\1\1\4"s}}, {"\2", {"TB-1"}}};
  std::vector<std::string> frames;
  Clock::duration shortest_frame = 1h;

 private:
  void begin() {
    begun_ = Clock::now();
    cable_.lines = {};
  }
  void answer() {
    if (frame_.empty()) return;
    shortest_frame = std::min<Clock::duration>(shortest_frame, Clock::now() - begun_);
    frames.push_back(std::exchange(frame_, {}));
    const auto answer = answers[frames.back()];
    cable_.lines.dsr = !answer.late;
    next_ = Timeout::once(7ms, [this, answer] {
      cable_.send(answer.bytes);
      cable_.lines = {.dsr = answer.endless, .ri = answer.error};
    });
  }

  SerialCable& cable_;
  std::string frame_;
  Clock::time_point begun_;
  Timeout next_;
};

TEST_F(TessaraTest, takes_no_answer_for_what_it_is_not) {
  SerialCable cable;
  Wire wire(cable);
  const auto port = SerialPortTessara::create(record, cable.plug());
  port->offer();
  clock.advance(1s);
  ASSERT_TRUE(bus() && bus()->active());
  EXPECT_GE(wire.shortest_frame, 20ms) << "what is in the driver has to go out";

  const auto ping = [] { return bus()->ping(7) ? "yes"s : "no"s; };
  const auto get = [] { return std::to_string(bus()->get_speed(7)); };
  const auto set = [] {
    bus()->set_speed(7, 3);
    return "done"s;
  };
  const auto relay = [] { return bus()->relay(7, "x"); };
  const std::string failed = "failed: Tessara Command Failed";
  const std::string at_7 = "\x0b\7\0"s, rest = "\x09\0"s, fetch = "\x0c";
  const std::string none = "\0\0"s, one = "\0\1"s, two = "\0\2"s, three = "\0\3"s;
  const struct {
    std::function<std::string()> call;
    std::map<std::string, Wire::Answer> answers;
    std::string result;
  } cases[] = {
      {ping, {{at_7, {two}}, {fetch, {"\0"s}}}, "yes"},
      {ping, {{at_7, {two}}, {fetch, {"\1G"}}}, "yes"},
      {ping, {{at_7, {two}}, {fetch, {"\1"}}}, "no"},
      {ping, {{at_7, {two}}, {fetch, {"\2G"}}}, "no"},
      {ping, {{at_7, {two}}, {fetch, {""}}}, "no"},
      {ping, {{at_7, {two}}, {fetch, {"\0"s, true}}}, "no"},
      {ping, {{at_7, {one}}, {rest, {one}}, {fetch, {"\0"s}}}, "yes"},
      {ping, {{at_7, {none}}, {fetch, {"\0"s}}}, "no"},
      {ping, {{at_7, {three}}, {fetch, {"\0"s}}}, "no"},
      {ping, {{at_7, {"\2"}}, {fetch, {"\0"s}}}, "no"},
      {get, {{"\6\7", {"\4"}}}, "4"},
      {get, {{"\6\7", {.bytes = "\4", .late = true}}}, "4"},
      {get, {{"\6\7", {"\4\4"}}}, failed},
      {get, {{"\6\7", {""}}}, failed},
      {get, {{"\6\7", {"\4", true}}}, failed},
      {get, {{"\6\7", {.bytes = "\4", .endless = true}}}, failed},
      {set, {{"\7\7\3", {""}}}, "done"},
      {set, {{"\7\7\3", {"\0"s}}}, failed},
      {relay, {{"\x0b\7x", {two}}, {fetch, {"\0x"s}}}, "x"},
      {relay, {{"\x0b\7x", {three}}, {fetch, {"\0x"s}}}, failed},
      {relay, {{"\x0b\7x", {"\2"}}, {fetch, {"\0x"s}}}, failed},
      {relay, {{"\x0b\7x", {two}}, {fetch, {""}}}, failed},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    wire.answers = cases[i].answers;
    EXPECT_EQ(cases[i].result, result_of(cases[i].call, 700ms)) << i;
  }
  bus()->destroy();
  clock.advance(1s);
}

TEST_F(TessaraTest, gives_up_an_answer_that_is_longer_than_any) {
  plug_in();
  plugged->cable.floods = true;
  std::size_t received = 0;
  fiber::spawn([&] {
    try {
      bus()->read_serial();
    } catch (const TessaraCmdFailed& failure) {
      received = failure.received().size();
    }
  });
  clock.advance(20ms);  // while the program sends
  EXPECT_THAT(received, testing::AllOf(testing::Ge(16384u), testing::Lt(17000u)));
  EXPECT_EQ(get_status(), "Tessara Bus 1 does not come to an end with an answer.");
  clock.advance(1s);
  plugged->cable.floods = false;
  EXPECT_EQ("TB-1", result_of([] { return bus()->read_serial(); }));
  EXPECT_EQ(get_status(), "Tessara Bus 1 answers again.");
}

// --- Relaying ---

TEST_F(TessaraTest, relays_messages_of_any_length_however_the_master_takes_them) {
  GadgetHardware hardware;
  gadgets = {{7, hardware}};
  plug_in();
  for (const std::size_t length : {1u, 253u, 254u, 255u, 600u}) {
    for (const std::size_t capacity : {256u, 100u, 1u}) {
      if (length > 256 * capacity) continue;
      master().options.capacity = capacity;
      master().options.not_ready = capacity == 100 ? 3 : 0;
      master().options.piece = capacity;
      if (length * 70 / capacity > 2000) continue;  // longer than a relay may take
      const std::string message(length, 'x');
      EXPECT_EQ(message, result_of([&] { return bus()->relay(7, message); }))
          << length << " by " << capacity;
    }
  }
  EXPECT_THAT(result_of([&] { return bus()->relay(8, "x"); }), StartsWith("failed"));
}

TEST_F(TessaraTest, gives_up_a_device_that_holds_up_the_bus_and_goes_on) {
  GadgetHardware hardware;
  gadgets = {{7, hardware}};
  plug_in();
  const std::string failed = "failed: Tessara Command Failed";
  const auto relay = [&] { return bus()->relay(7, "x"); };
  using Faults = TessaraMaster::Faults;
  for (const auto& [name, fault] :
       std::vector<std::pair<std::string, Faults>>{{"never ready", {.never_ready = true}},
                                                   {"never done", {.never_done = true}},
                                                   {"endless", {.endless = true}},
                                                   {"silent", {.silent = true}},
                                                   {"refused", {.errors = 1}},
                                                   {"lost byte", {.lost_byte = 0}}}) {
    master().faults = fault;
    EXPECT_EQ(failed, result_of(relay, 2100ms)) << name;
    master().faults = {};
    EXPECT_EQ("x", result_of(relay, 1s)) << name;
    EXPECT_TRUE(bus()->active()) << name;
  }
}

// --- Looking for devices ---

TEST_F(TessaraTest, finds_a_device_at_the_speed_of_the_bus_or_at_the_lowest) {
  GadgetHardware hardware;
  gadgets = {{7, hardware}};
  plug_in();
  const Unadded<Gadget> gadget(new Gadget(bus(), 7));
  struct Case {
    unsigned bus_speed, device_speed;
    bool found;
    unsigned bus_speed_after;
  };
  for (const auto& [bus_speed, device_speed, found, after] :
       {Case{0, 0, true, 0}, Case{3, 3, true, 3}, Case{3, 0, true, 0}, Case{3, 2, false, 3},
        Case{0, 2, false, 0}}) {
    hardware.at_speed = device_speed;
    const auto speed = static_cast<std::uint8_t>(bus_speed);
    EXPECT_EQ(found ? "yes" : "no", result_of([&] {
                bus()->set_speed(7, speed);
                return gadget->find_on_bus() ? "yes" : "no";
              }))
        << bus_speed << device_speed;
    EXPECT_EQ(after, master().speed(7)) << bus_speed << device_speed;
  }
}

TEST_F(TessaraTest, scans_all_free_addresses) {
  GadgetHardware low("G-low", 0), high("G-high", 3), last("G-last", 0), unknown("G-odd", 4);
  for (const std::uint8_t speed_scan : {std::uint8_t{0}, std::uint8_t{1}}) {
    gadgets = {{0, low}, {130, high}, {255, last}};
    high.at_speed = speed_scan == 0 ? 3u : 0u;
    TessaraMaster::Options options;
    options.speed_scan = speed_scan;
    options.max_speed = 3;
    plug_in("TB-" + std::to_string(speed_scan), options);
    auto* found_bus = bus(speed_scan);
    found_bus->mark_used(77);
    static_cast<void>(master().take_messages(77));

    int notices = 0;
    found_bus->property_scanning().signal_changed().connect([&] { ++notices; });
    std::vector<double> progress;
    found_bus->property_scan_progress().signal_changed().connect(
        [&] { progress.push_back(found_bus->get_scan_progress()); });
    found_bus->set_scanning(true);
    EXPECT_TRUE(found_bus->get_scanning());
    for (int i = 0; i < 300 && found_bus->get_scanning(); ++i) clock.advance(1s);
    EXPECT_FALSE(found_bus->get_scanning());
    EXPECT_EQ(0.0, found_bus->get_scan_progress());
    EXPECT_EQ(2, notices);
    EXPECT_THAT(progress, Contains(0.5));
    EXPECT_THAT(progress, Each(testing::AllOf(testing::Ge(0.0), testing::Le(1.0))));
    EXPECT_THAT(master().take_messages(77), IsEmpty()) << "a device has that address";

    ASSERT_EQ(3u, found_bus->child_count());
    std::vector<std::string> serials;
    for (auto* child : *found_bus) {
      auto* gadget = dynamic_cast<Gadget*>(child);
      EXPECT_TRUE(gadget->active());
      serials.push_back(gadget->get_serial_nr());
    }
    EXPECT_THAT(serials, ElementsAre("G-low", "G-high", "G-last"));
    pull_plug();
  }
}

TEST_F(TessaraTest, ends_a_scan_when_it_is_told_to_or_the_bus_has_gone) {
  plug_in();
  bus()->set_scanning(true);
  clock.advance(1s);
  EXPECT_GT(bus()->get_scan_progress(), 0.0);
  bus()->set_scanning(false);
  EXPECT_EQ(0.0, bus()->get_scan_progress());
  static_cast<void>(master().take_frames());
  clock.advance(500ms);
  EXPECT_THAT(master().take_frames(), IsEmpty());

  bus()->set_scanning(true);
  clock.advance(1s);
  pull_plug();
  EXPECT_FALSE(bus()->get_scanning());
  bus()->set_scanning(true);
  clock.advance(1s);
  EXPECT_FALSE(bus()->get_scanning()) << "out of service";
}

TEST_F(TessaraTest, does_not_disturb_by_a_new_scan_what_the_last_one_has_found) {
  GadgetHardware hardware;
  gadgets = {{0, hardware}};
  for (int moment = 0; moment < 600; moment += 20) {
    plug_in();
    bus()->set_scanning(true);
    clock.advance(std::chrono::milliseconds(moment));
    bus()->set_scanning(false);
    bus()->set_scanning(true);
    clock.advance(2s);
    EXPECT_EQ(1u, bus()->child_count()) << moment;
    pull_plug();
    layout().get_devices().destroy_children();
  }
}

// --- The link ---

TEST_F(TessaraTest, tells_how_its_link_is_at_each_step_of_its_life) {
  const Unadded<DeviceTessaraBus> unknown(
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
}  // namespace zemblar

// What the driver of a Tessara bus makes of the bytes on the wire, and how it finds devices.

#include "tests/devices/tessara_fixture.h"

namespace zemblar::test {
namespace {

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
  const DetachedPtr<Gadget> gadget(new Gadget(bus(), 7));
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

}  // namespace
}  // namespace zemblar::test

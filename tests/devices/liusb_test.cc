#include <glibmm/main.h>
#include <gmock/gmock.h>
#include <yaml-cpp/yaml.h>

#include <cerrno>

#include "core/toplevel.h"
#include "devices/default_device.h"
#include "devices/liusb/device_liusb.h"
#include "simulator/bus/serial_cable.h"
#include "simulator/stations/liusb_interface.h"
#include "simulator/stations/pseudo_terminal.h"
#include "support/fake_station.h"
#include "support/layout_fixture.h"
#include "support/link_steps.h"
#include "support/test_decoder.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using simulator::LiUsbInterface;
using simulator::SerialCable;
using test::TestDecoder;
using testing::ElementsAre;
using testing::HasSubstr;
using Trace = std::vector<std::string>;

const HWDevice record{.hardware_ids = {"usb\\vid_0403&pid_d780"}, .port_name = "ttyUSB0"};
const Trace start_trace = {"f0", "21 24"};

void later(std::chrono::milliseconds delay, std::function<void()> call) {
  Timeout::once(delay, std::move(call)).release();
}

class LIUSBTest : public test::LayoutTest {
 protected:
  LIUSBTest() {
    cable.on_bytes([this](std::string_view bytes) { hardware.receive(bytes); });
  }
  ~LIUSBTest() override {
    layout().get_devices().destroy_children();
    clock.advance(10s);
  }

  /// The hardware is plugged in, as discovery tells it.
  void plug_in() {
    port = SerialPortLIUSB::create(record, cable.plug());
    port->offer();
    clock.advance(100ms);
  }
  void pull_plug() {
    hardware.lose_power();
    cable.unplug();
    port->remove();
    port.reset();
    clock.advance(0ms);
  }
  /// Plugged in and in service, with the trace of the start forgotten.
  LIUSB* add_started() {
    auto* device = layout().get_devices().add(new LIUSB);
    plug_in();
    EXPECT_TRUE(device->active());
    EXPECT_EQ(start_trace, hardware.take_requests());
    return device;
  }
  Trace after(std::chrono::milliseconds time) {
    clock.advance(time);
    return hardware.take_requests();
  }

  VirtualClock clock;
  SerialCable cable;
  LiUsbInterface hardware{later, [this](std::string_view bytes) { cable.send(bytes); }};
  Glib::RefPtr<SerialPortLIUSB> port;
};

// --- Commands ---

TEST_F(LIUSBTest, drives_a_locomotive) {
  auto* device = add_started();
  EXPECT_EQ(57600u, cable.settings().baud);
  EXPECT_EQ(Flow::Hard, cable.settings().flow);
  const auto decoder = TestDecoder::create(*device);
  decoder->want_speed(63);
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 00 03 c0"));
  decoder->want_direction(Direction::Reverse);
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 00 03 40"));
  decoder->want_speed(DecoderUpdate::emergency_stop);
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 00 03 01"));
  decoder->want_function(0, true);
  EXPECT_THAT(after(50ms), ElementsAre("e4 20 00 03 10"));
  decoder->want_function(28, true);
  EXPECT_THAT(after(50ms), ElementsAre("e4 28 00 03 80"));
  EXPECT_TRUE(decoder->up_to_date());
  const auto* locomotive = hardware.station.locomotive(3);
  ASSERT_TRUE(locomotive);
  EXPECT_TRUE(locomotive->emergency && !locomotive->forwards);
  EXPECT_TRUE(locomotive->functions.at(0) && locomotive->functions.at(28));
  EXPECT_FALSE(locomotive->functions.at(1) || locomotive->functions.at(21));
}

TEST_F(LIUSBTest, sends_speed_and_direction_together_and_functions_by_the_group) {
  auto* device = add_started();
  const auto decoder = TestDecoder::create(*device, 1200);
  decoder->want_speed(10);
  decoder->want_direction(Direction::Reverse);
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 c4 b0 8b", "e4 13 c4 b0 0b"))
      << "the first was under way";
  decoder->want_function(5, true);
  decoder->want_function(7, true);
  decoder->want_function(9, true);
  EXPECT_THAT(after(50ms), ElementsAre("e4 21 c4 b0 01", "e4 21 c4 b0 05", "e4 22 c4 b0 01"));
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(LIUSBTest, sends_the_newest_of_values_that_change_quickly_and_starves_nobody) {
  auto* device = add_started();
  const auto first = TestDecoder::create(*device, 3);
  const auto second = TestDecoder::create(*device, 4);
  for (unsigned speed = 1; speed <= 5; ++speed) {
    first->want_speed(speed);
    second->want_speed(100 + speed);
  }
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 00 03 82", "e4 13 00 04 ea", "e4 13 00 03 86"));
  EXPECT_TRUE(first->up_to_date() && second->up_to_date());
}

TEST_F(LIUSBTest, switches_points_and_power) {
  auto* device = add_started();
  EXPECT_TRUE(device->track_power()) << "as the station said";
  device->run_set_point(1, 1, false);
  device->run_set_point(256, 4, true);
  EXPECT_THAT(after(50ms), ElementsAre("52 00 80", "52 00 88", "52 ff 87", "52 ff 8f"));
  EXPECT_EQ(false, hardware.station.coil(256, 8)) << "released again";
  device->set_track_power(false);
  EXPECT_TRUE(device->track_power()) << "not yet confirmed";
  EXPECT_THAT(after(50ms), ElementsAre("21 80"));
  EXPECT_FALSE(device->track_power() || hardware.station.power);
  device->set_track_power(true);
  EXPECT_THAT(after(50ms), ElementsAre("21 81"));
  EXPECT_TRUE(device->track_power());
}

TEST_F(LIUSBTest, takes_a_broadcast_for_the_confirmation_of_power_where_no_answer_comes) {
  auto* device = add_started();
  hardware.faults.deaf_to = {0x2180, 0x2181};
  device->set_track_power(false);
  clock.advance(50ms);
  hardware.broadcast({0x61, 0x00});
  clock.advance(1ms);
  EXPECT_FALSE(device->track_power());
  clock.advance(1s);
  EXPECT_EQ("", get_status());
  device->set_track_power(true);
  EXPECT_THAT(after(1s), testing::SizeIs(testing::Ge(1u)));
  EXPECT_FALSE(device->track_power()) << "nothing has confirmed that";
  EXPECT_THAT(get_status(), HasSubstr("does not answer"));
}

TEST_F(LIUSBTest, does_not_let_decoders_of_one_address_undo_each_other) {
  auto* device = add_started();
  const auto lights = TestDecoder::create(*device, 20);
  const auto motor = TestDecoder::create(*device, 20);
  lights->want_function(1, true);
  clock.advance(50ms);
  motor->want_function(2, true);
  clock.advance(50ms);
  lights->want_function(1, false);
  lights->want_function(3, true);
  EXPECT_THAT(after(50ms),
              ElementsAre("e4 20 00 14 01", "e4 20 00 14 03", "e4 20 00 14 02", "e4 20 00 14 06"));
  EXPECT_TRUE(lights->up_to_date() && motor->up_to_date());
  // What nobody has confirmed may have been done all the same.
  hardware.faults.mute = true;
  lights->want_function(4, true);
  clock.advance(50ms);
  hardware.faults.mute = false;
  motor->want_function(1, true);
  EXPECT_THAT(after(3s), ElementsAre("e4 20 00 14 0e", "e4 20 00 14 0f", "e4 20 00 14 0f"));
}

TEST_F(LIUSBTest, sends_nothing_older_with_what_is_newer) {
  add_started();
  const auto decoder = TestDecoder::create(layout().get_default_device());
  // The emergency stop goes first, and the direction that was wished before it must not undo it.
  decoder->want_speed(100);
  clock.advance(50ms);
  decoder->want_function(1, true);
  decoder->want_direction(Direction::Reverse);
  decoder->want_speed(DecoderUpdate::emergency_stop);
  clock.advance(50ms);
  EXPECT_TRUE(hardware.station.locomotive(3)->emergency);
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(LIUSBTest, is_told_again_what_a_later_message_has_undone) {
  add_started();
  auto* slow = test::FakeStation::in_service();
  slow->hold_answers = true;
  const auto decoder = TestDecoder::create(layout().get_default_device());
  const auto wish = [&](auto&& change) {
    change();
    clock.advance(50ms);
  };
  wish([&] { decoder->want_direction(Direction::Reverse); });
  wish([&] { decoder->want_speed(10); });
  // Both speeds carry the direction to this station; the other one has yet to answer for the first.
  wish([&] { decoder->want_direction(Direction::Forwards); });
  wish([&] { decoder->want_speed(20); });
  wish([&] { decoder->want_direction(Direction::Reverse); });
  slow->hold_answers = false;
  wish([&] { slow->answer(); });
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_FALSE(hardware.station.locomotive(3)->forwards);
}

TEST_F(LIUSBTest, gives_up_a_point_that_the_station_does_not_switch) {
  auto* device = add_started();
  hardware.faults.answers[0x52] = {0x61, 0x81};
  device->run_set_point(7, 1, true);
  EXPECT_THAT(after(50ms), ElementsAre("52 06 81"));
  EXPECT_THAT(get_status(), HasSubstr("did not switch accessory decoder 7"));
  hardware.faults.answers.clear();
  device->run_set_point(7, 1, true);
  EXPECT_EQ(2u, after(50ms).size()) << "free again";
}

TEST_F(LIUSBTest, refuses_addresses_that_the_station_does_not_have) {
  auto* device = add_started();
  for (const auto address : {100u, 127u, 10000u}) {
    const auto decoder = TestDecoder::create(*device, address);
    decoder->want_speed(5);
    decoder->want_function(2, true);
    EXPECT_THAT(after(5s), ElementsAre()) << address;
    EXPECT_FALSE(decoder->up_to_date());
    EXPECT_THAT(get_status(), HasSubstr("address " + std::to_string(address)));
  }
  device->run_set_point(257, 1, true);
  EXPECT_THAT(after(5s), ElementsAre());
  EXPECT_THAT(get_status(), HasSubstr("accessory decoder 257"));

  auto& everybody = layout().get_default_device();
  const auto decoder = TestDecoder::create(everybody, 10000);
  decoder->want_speed(5);
  EXPECT_THAT(after(5s), ElementsAre());
  EXPECT_FALSE(decoder->up_to_date());
  const auto other = TestDecoder::create(everybody, 99);
  other->want_speed(5);
  EXPECT_THAT(after(50ms), ElementsAre("e4 13 00 63 86"));
}

// --- Trouble on the line ---

TEST_F(LIUSBTest, finds_answers_behind_broadcasts_and_garbage_and_in_pieces) {
  auto* device = add_started();
  const auto decoder = TestDecoder::create(*device);
  hardware.faults.broadcasts = true;
  hardware.faults.garbage = std::string("\x00\xff\x07", 3);
  hardware.faults.pieces = true;
  decoder->want_speed(1);
  EXPECT_EQ(1u, after(100ms).size());
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(LIUSBTest, tries_again_after_750_ms_without_an_answer) {
  auto* device = add_started();
  const auto decoder = TestDecoder::create(*device);
  const auto other = TestDecoder::create(*device, 4);
  hardware.faults.mute = true;
  decoder->want_speed(1);
  other->want_speed(2);
  EXPECT_THAT(after(749ms), ElementsAre("e4 13 00 03 82"));
  decoder->want_speed(3);
  EXPECT_EQ("", get_status());
  EXPECT_THAT(after(20ms), testing::SizeIs(1)) << "the next attempt";
  EXPECT_TRUE(device->active());
  EXPECT_THAT(get_status(), HasSubstr("does not answer"));
  EXPECT_THAT(after(7500ms), testing::SizeIs(10)) << "no faster than that";
  hardware.faults.mute = false;
  clock.advance(1s);
  EXPECT_TRUE(decoder->up_to_date() && other->up_to_date());
  EXPECT_EQ(3u, hardware.station.locomotive(3)->step);
  EXPECT_THAT(get_status(), HasSubstr("answers again"));
}

TEST_F(LIUSBTest, stops_others_while_one_locomotive_or_point_is_not_answered_for) {
  auto* device = add_started();
  std::vector<Glib::RefPtr<TestDecoder>> decoders;
  for (const auto address : {3u, 4u, 5u}) decoders.push_back(TestDecoder::create(*device, address));
  // Nobody answers for address 3, nor for points.
  hardware.faults.deaf_to = {0x52, 0xe4130003};
  for (unsigned point = 1; point <= 20; ++point) device->run_set_point(point, 1, true);
  decoders[0]->want_speed(DecoderUpdate::emergency_stop);
  decoders[2]->want_function(1, true);
  clock.advance(10s);
  decoders[1]->want_speed(0);
  clock.advance(1750ms);
  EXPECT_TRUE(decoders[1]->up_to_date());
  // What waits for it in many functions is tried once in a turn.
  auto& everybody = layout().get_default_device();
  const auto deaf = TestDecoder::create(everybody, 3);
  const auto other = TestDecoder::create(everybody, 6);
  for (unsigned fn = 0; fn <= 28; ++fn) deaf->want_function(fn, true);
  deaf->want_speed(DecoderUpdate::emergency_stop);
  other->want_speed(0);
  clock.advance(2500ms);
  EXPECT_TRUE(other->up_to_date());
  clock.advance(60s);
  EXPECT_TRUE(decoders[2]->up_to_date()) << "and nobody else is starved";
  hardware.faults.deaf_to.clear();
  clock.advance(2s);
  EXPECT_TRUE(decoders[0]->up_to_date());
}

TEST_F(LIUSBTest, switches_off_the_power_whose_switching_on_had_no_answer) {
  auto* device = add_started();
  device->set_track_power(false);
  clock.advance(50ms);
  hardware.faults.late = 800ms;
  device->set_track_power(true);
  clock.advance(790ms);
  EXPECT_TRUE(hardware.station.power && !device->track_power());
  device->set_track_power(false);
  clock.advance(750ms);
  EXPECT_FALSE(hardware.station.power);
}

TEST_F(LIUSBTest, switches_the_power_off_between_stops_that_are_not_answered) {
  auto* device = add_started();
  std::vector<Glib::RefPtr<TestDecoder>> decoders;
  for (unsigned address = 1; address < 9; ++address) {
    decoders.push_back(TestDecoder::create(*device, address));
  }
  hardware.faults.mute = true;
  for (const auto& decoder : decoders) decoder->want_speed(0);
  clock.advance(800ms);
  device->set_track_power(false);
  clock.advance(750ms);
  EXPECT_FALSE(hardware.station.power);
}

TEST_F(LIUSBTest, recovers_from_an_answer_that_misses_a_byte_or_comes_too_late) {
  auto* device = add_started();
  const auto decoder = TestDecoder::create(*device);
  for (std::size_t lost = 0; lost < 5; ++lost) {
    hardware.faults.lost_byte = lost;
    decoder->want_speed(static_cast<unsigned>(lost) + 1);
    clock.advance(700ms);
    EXPECT_FALSE(decoder->up_to_date()) << lost;
    hardware.faults.lost_byte = LiUsbInterface::no_byte;
    clock.advance(1s);
    EXPECT_TRUE(decoder->up_to_date()) << lost;
  }
  hardware.take_requests();
  // That answer comes when the next request is on its way, and another one is left over.
  hardware.faults.late = 800ms;
  decoder->want_speed(10);
  clock.advance(760ms);
  hardware.faults.late = 2ms;
  clock.advance(2s);
  EXPECT_TRUE(decoder->up_to_date());
  device->run_set_point(1, 1, true);
  clock.advance(100ms);
  EXPECT_EQ(false, hardware.station.coil(1, 2));
}

// --- Coming and going ---

TEST_F(LIUSBTest, becomes_a_device_of_its_own_when_nobody_waits_for_it) {
  plug_in();
  auto& devices = layout().get_devices();
  ASSERT_EQ(1u, devices.child_count());
  auto* device = dynamic_cast<LIUSB*>(devices.child_at(0));
  ASSERT_TRUE(device);
  EXPECT_EQ("Lenz LI-USB 1", device->get_name());
  EXPECT_TRUE(device->active());
  EXPECT_TRUE(layout().get_default_device().devices().contains(device));
  EXPECT_FALSE(port->offer()) << "held";
  device->destroy();
  EXPECT_FALSE(cable.is_open());
  EXPECT_TRUE(port->offer()) << "and made again";
  clock.advance(100ms);
  EXPECT_EQ(1u, devices.child_count());
}

TEST_F(LIUSBTest, goes_out_of_service_when_unplugged_and_returns) {
  auto* device = add_started();
  auto* waiting = layout().get_devices().add(new LIUSB);
  const auto decoder = TestDecoder::create(*device);
  decoder->want_speed(1);
  pull_plug();
  EXPECT_FALSE(device->active());
  EXPECT_FALSE(layout().get_default_device().devices().contains(device));
  EXPECT_FALSE(decoder->up_to_date());
  hardware.take_requests();
  waiting->destroy();
  plug_in();
  EXPECT_TRUE(device->active());
  EXPECT_EQ(1u, layout().get_devices().child_count()) << "the same device";
  EXPECT_EQ(start_trace, hardware.take_requests());
  decoder->send();
  clock.advance(50ms);
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(LIUSBTest, lets_go_of_a_port_that_fails_before_its_end_is_announced) {
  auto* device = add_started();
  const auto decoder = TestDecoder::create(*device);
  for (const int loss : {EIO, ENODEV, ENXIO}) {
    cable.loss = loss;
    cable.unplug();
    decoder->want_speed(static_cast<unsigned>(loss));
    clock.advance(10ms);
    EXPECT_FALSE(device->active()) << loss;
    EXPECT_THAT(get_status(), HasSubstr("lost its port ttyUSB0")) << loss;
    port->remove();
    plug_in();
    EXPECT_TRUE(device->active()) << loss;
  }
}

TEST_F(LIUSBTest, returns_at_each_moment_of_a_start_that_the_plug_is_pulled) {
  auto* device = layout().get_devices().add(new LIUSB);
  for (int time = 0; time < 12; ++time) {
    port = SerialPortLIUSB::create(record, cable.plug());
    EXPECT_TRUE(port->offer());
    clock.advance(std::chrono::milliseconds(time));
    hardware.lose_power();
    cable.unplug();
    port->remove();
    port = SerialPortLIUSB::create(record, cable.plug());
    EXPECT_TRUE(port->offer()) << "at once";
    clock.advance(2s);
    EXPECT_TRUE(device->active()) << time << " ms";
    pull_plug();
    clock.advance(1s);
    EXPECT_FALSE(device->active());
  }
}

TEST_F(LIUSBTest, asks_an_interface_again_that_does_not_answer_as_it_should) {
  const struct {
    simulator::XpressNetStation::Message answer;
    const char* reason;
  } cases[] = {{{0x61, 0x82}, "buf.size() != 3"}, {{0x12, 0x10, 0x01}, "buf[0] != 0x02"}};
  auto* device = layout().get_devices().add(new LIUSB);
  for (const auto& [answer, reason] : cases) {
    hardware.faults.answers[0xf0] = answer;
    plug_in();
    EXPECT_FALSE(device->active());
    EXPECT_THAT(get_status(), HasSubstr(reason));
    EXPECT_THAT(hardware.take_requests(), ElementsAre("f0"));
    hardware.faults.answers.clear();
    clock.advance(1s);
    EXPECT_TRUE(device->active());
    EXPECT_EQ(start_trace, hardware.take_requests());
    EXPECT_EQ("", get_status());
    pull_plug();
  }
}

TEST_F(LIUSBTest, sends_the_start_mode_to_a_station_that_waits_for_it) {
  hardware.station.cold_start = hardware.station.automatic_start = true;
  hardware.station.power = false;
  auto* device = layout().get_devices().add(new LIUSB);
  plug_in();
  EXPECT_THAT(hardware.take_requests(), ElementsAre("f0", "21 24", "22 22 00"));
  EXPECT_FALSE(hardware.station.automatic_start);
  EXPECT_TRUE(device->active() && !device->track_power());
}

TEST_F(LIUSBTest, may_be_destroyed_in_the_middle_of_everything) {
  for (int time = 0; time < 12; ++time) {
    auto* device = layout().get_devices().add(new LIUSB);
    port = SerialPortLIUSB::create(record, cable.plug());
    port->offer();
    const auto decoder = TestDecoder::create(*device);
    decoder->persistent = false;
    decoder->want_speed(1);
    device->run_set_point(1, 1, true);
    clock.advance(std::chrono::milliseconds(time));
    device->destroy();
    EXPECT_FALSE(cable.is_open());
    // The one that follows may hear the answer that was meant for the first.
    auto* heir = layout().get_devices().add(new LIUSB);
    port->offer();
    clock.advance(2s);
    EXPECT_TRUE(heir->active()) << time << " ms";
    heir->destroy();
    clock.advance(1s);
    EXPECT_FALSE(port->busy());
  }
}

TEST_F(LIUSBTest, tells_how_its_link_is_at_each_step_of_its_life) {
  auto* device = layout().get_devices().add(new LIUSB);
  const auto silent = "does not answer: is the command station switched on";
  const auto unplugged = "is not plugged in";
  const auto pull = [&] {
    hardware.lose_power();
    cable.unplug();
    port->remove();
  };
  test::walk(
      clock, *device,
      {{"made", [] {}, 10ms, LinkPhase::looking_for_hardware, 10ms, unplugged, ""},
       {"plugged in, not allowed", [&] { cable.refusal = EACCES, plug_in(); }, 0ms,
        LinkPhase::connecting, 100ms, "may not use the port", "may not use the port ttyUSB0"},
       {"allowed, no answer", [&] { cable.refusal = 0, hardware.faults.mute = true; }, 1700ms,
        LinkPhase::connecting, 1800ms, silent, silent},
       {"pulled out", pull, 10ms, LinkPhase::looking_for_hardware, 10ms, unplugged, ""},
       {"an answer", [&] { hardware.faults.mute = false, plug_in(); }, 0ms, LinkPhase::in_service,
        96ms, "", ""},
       {"a point without an answer",
        [&] { hardware.faults.mute = true, device->run_set_point(1, 1, true); }, 749ms,
        LinkPhase::in_service, 845ms, "", ""},
       {"for 750 ms", [] {}, 101ms, LinkPhase::waiting_for_answer, 100ms, silent, silent},
       {"the station is asked", [&] { hardware.faults.mute = false; }, 1s, LinkPhase::in_service,
        98ms, "", "answers again"},
       {"pulled out in service", [&] { clear_status(), pull(); }, 10ms, LinkPhase::lost, 10ms,
        unplugged, unplugged},
       {"in service again", [&] { plug_in(); }, 0ms, LinkPhase::in_service, 96ms, "", ""}});
}

// --- In the document ---

TEST_F(LIUSBTest, is_written_and_read) {
  auto* device = layout().get_devices().add(new LIUSB);
  device->set_use_as_default(false);
  YAML::Emitter out;
  device->save(out);
  EXPECT_THAT(out.c_str(), HasSubstr("!device/Lenz/LI-USB"));
  EXPECT_THAT(out.c_str(), testing::ContainsRegex("name: Lenz LI-USB 1\nid: .*\nuse-as-default: "));
  device->destroy();
  const auto* read = dynamic_cast<LIUSB*>(Object::create(YAML::Load(out.c_str())));
  ASSERT_TRUE(read);
  EXPECT_EQ("Lenz LI-USB 1", read->get_name());
  EXPECT_FALSE(read->get_use_as_default());
  plug_in();
  EXPECT_TRUE(read->active()) << "it takes the hardware";
  EXPECT_TRUE(layout().get_default_device().devices().empty());
}

TEST(SerialPortLIUSB, is_the_class_for_a_li_usb_that_has_a_port) {
  auto other = record;
  EXPECT_EQ(20, SerialPortLIUSB::score(other));
  other.hardware_ids = {"FTDIBUS\\COMPORT&VID_0403&PID_D780"};
  EXPECT_EQ(20, SerialPortLIUSB::score(other));
  other.port_name.clear();
  EXPECT_EQ(0, SerialPortLIUSB::score(other));
  other = record;
  other.hardware_ids = {"USB\\VID_0403&PID_6001"};
  EXPECT_EQ(0, SerialPortLIUSB::score(other));
}

// --- A terminal of the system, in real time ---

class TerminalLIUSBTest : public test::LayoutTest {};

TEST_F(TerminalLIUSBTest, drives_over_a_terminal_and_sees_it_hang_up) {
  simulator::PseudoTerminal terminal;
  LiUsbInterface hardware(later, [&](std::string_view bytes) { terminal.send(bytes); });
  terminal.on_bytes([&](std::string_view bytes) { hardware.receive(bytes); });
  const auto wait_until = [](const std::function<bool()>& condition) {
    bool late = false;
    const auto limit = Timeout::once(5s, [&] { late = true; });
    while (!condition() && !late) Glib::MainContext::get_default()->iteration(true);
    return !late;
  };
  auto* device = layout().get_devices().add(new LIUSB);
  const auto port = SerialPortLIUSB::create({.port_name = terminal.path()});
  port->offer();
  ASSERT_TRUE(wait_until([&] { return device->active(); }));
  const auto decoder = TestDecoder::create(*device);
  decoder->want_speed(126);
  ASSERT_TRUE(wait_until([&] { return decoder->up_to_date(); }));
  EXPECT_EQ(126u, hardware.station.locomotive(3)->step);
  device->run_set_point(9, 1, true);
  ASSERT_TRUE(wait_until([&] { return hardware.station.coil(9, 2) == false; }));

  terminal.hang_up();
  decoder->want_speed(1);
  EXPECT_TRUE(wait_until([&] { return !device->active(); }));
}

}  // namespace
}  // namespace zemblar

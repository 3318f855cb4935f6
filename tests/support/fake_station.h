#pragma once

#include <string>
#include <utility>
#include <vector>

#include "devices/default_device.h"
#include "devices/device.h"
#include "runtime/fiber.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {

/// A station that writes down what it should send, as "3 speed 63", and answers at once or when it
/// is told to. Its track power follows at once.
class FakeStation : public Device {
 public:
  using Log = std::vector<std::string>;

  /// `power` is how far it supports "DCC/Power".
  explicit FakeStation(int power = 0)
      : Glib::ObjectBase("FakeStation"), Device("Station %1"), power_(power) {}

  /// In the layout's devices and in service; for decoders without a device too if `by_default`.
  static FakeStation* in_service(bool by_default = true) {
    auto* station = Layout::get().get_devices().add(new FakeStation);
    if (by_default) Layout::get().get_default_device().add_device(station);
    station->set_active(true);
    return station;
  }

  [[nodiscard]] int supports(std::string_view feature) const override {
    return feature == "DCC" ? 2 : feature == "DCC/Power" ? power_ : 0;
  }
  /// What was asked for since the last call.
  Log sent() { return std::exchange(sent_, {}); }

  /// How many of the next items it gives up before they have reached the track.
  unsigned failures = 0;
  /// Keeps the answers back until `answer`.
  bool hold_answers = false;
  void answer() {
    for (auto* f : std::exchange(waiting_, {})) fiber::resume(f, 0);
  }

 protected:
  void power_on() override {
    sent_.emplace_back("power on");
    track_power_is_on();
  }
  void power_off() override {
    sent_.emplace_back("power off");
    track_power_is_off();
  }
  void update_speed(DrivenDecoder* decoder) override {
    converse(decoder, DecoderUpdate::speed_bit, [](const DecoderUpdate& wish) {
      return wish.speed == DecoderUpdate::emergency_stop ? "stop"
                                                         : "speed " + std::to_string(wish.speed);
    });
  }
  void update_direction(DrivenDecoder* decoder) override {
    converse(decoder, DecoderUpdate::direction_bit, [](const DecoderUpdate& wish) {
      return std::string(wish.direction == Direction::Forwards ? "forwards" : "reverse");
    });
  }
  void update_function(DrivenDecoder* decoder, unsigned fn) override {
    converse(decoder, DecoderUpdate::function_bit(fn), [fn](const DecoderUpdate& wish) {
      return "f" + std::to_string(fn) + (wish.function(fn) ? " on" : " off");
    });
  }

  void set_point(unsigned address, unsigned output, bool on) override {
    sent_.push_back(std::to_string(address) + "/" + std::to_string(output) +
                    (on ? " right" : " left"));
  }
  void set_aspect(unsigned address, unsigned aspect) override {
    sent_.push_back(std::to_string(address) + " aspect " + std::to_string(aspect));
  }

 private:
  template <typename Text>
  void converse(DrivenDecoder* decoder, std::uint32_t item, const Text& text) {
    DecoderTask task(this, decoder);
    if (!task.leads()) return;
    auto delivered = decoder->state();
    delivered.mask = item;
    sent_.push_back(std::to_string(decoder->get_address().get_addr()) + " " + text(delivered));
    const auto alive = liveness();
    if (hold_answers) fiber::yield([this](fiber* f) { waiting_.push_back(f); });
    if (*alive && failures != 0) {
      --failures;
      return;
    }
    if (*alive) task.finish(delivered);
  }

  int power_;
  Log sent_;
  std::vector<fiber*> waiting_;
};

using Log = FakeStation::Log;

}  // namespace zemblar::test

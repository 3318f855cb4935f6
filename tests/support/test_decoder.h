#pragma once

#include <vector>

#include "devices/device.h"
#include "devices/driven_decoder.h"

namespace zemblar::test {

/// A decoder that counts its answers and, like a real one, asks again for what is out of date.
class TestDecoder : public DrivenDecoder {
 public:
  static Glib::RefPtr<TestDecoder> create(Device& device, unsigned address = 3) {
    return Glib::RefPtr<TestDecoder>(new TestDecoder(device, address));
  }

  void want_speed(std::uint32_t speed) {
    state_.speed = speed;
    state_.mask |= DecoderUpdate::speed_bit;
    send();
  }
  void want_direction(Direction direction) {
    state_.direction = direction;
    state_.mask |= DecoderUpdate::direction_bit;
    send();
  }
  void want_function(unsigned fn, bool on) {
    state_.functions = on ? state_.functions | 1u << fn : state_.functions & ~(1u << fn);
    state_.mask |= DecoderUpdate::function_bit(fn);
    send();
  }

  void complete(const DecoderUpdate& delivered) override {
    answers.push_back(delivered);
    state_.mask &= ~(state_.agreeing(delivered) & delivered.mask);
    if (persistent) send();
  }
  void send() {
    if (state_.mask & DecoderUpdate::speed_bit) return device_->run_update_speed(this);
    if (state_.mask & DecoderUpdate::direction_bit) return device_->run_update_direction(this);
    for (unsigned fn = 0; fn <= DecoderUpdate::max_function; ++fn) {
      if (state_.mask & DecoderUpdate::function_bit(fn)) device_->run_update_function(this, fn);
    }
  }
  [[nodiscard]] bool up_to_date() const { return state_.mask == 0; }

  std::vector<DecoderUpdate> answers;
  bool persistent = true;  // asks again

 private:
  TestDecoder(Device& device, unsigned address) : device_(&device) { address_ = Address(address); }

  Device* device_;
};

}  // namespace zemblar::test

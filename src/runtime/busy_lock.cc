#include "runtime/busy_lock.h"

#include <cassert>
#include <utility>

#include "runtime/fiber.h"

namespace zemblar {

Busy::~Busy() {
  *alive_ = false;
  wake_waiters();
}

void Busy::set_busy(bool value) {
  const auto alive = alive_;
  busy_ = value;
  while (*alive && !busy_ && !waiters_.empty()) {
    fiber* next = waiters_.front();
    waiters_.pop_front();
    fiber::resume(next, 0);
  }
}

void Busy::wait_free() {
  const auto alive = alive_;
  while (true) {
    if (!*alive || !active()) throw DeviceInactiveException();
    if (!busy_) return;
    fiber::yield([this](fiber* f) {
      assert(f);
      waiters_.push_back(f);
    });
  }
}

void Busy::wake_waiters() {
  // Moved out of the member first: a resumed fiber may wait again, or destroy the device.
  const auto woken = std::exchange(waiters_, {});
  for (fiber* f : woken) fiber::resume(f, 0);
}

BusyLock::BusyLock(Busy* device, bool wait) : device_(device), alive_(device->alive_) {
  if (wait) {
    device->wait_free();
  } else if (device->busy()) {
    throw BusyException();
  }
  device->set_busy(true);
}

BusyLock::~BusyLock() {
  if (*alive_) device_->set_busy(false);
}

}  // namespace zemblar

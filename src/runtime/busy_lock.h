#pragma once

#include <deque>
#include <exception>
#include <memory>

namespace zemblar {

class fiber;

/// A device is in a conversation, and the caller did not want to wait.
class BusyException : public std::exception {
 public:
  const char* what() const noexcept override { return "Device Busy"; }
};

/// A device is out of service or has gone.
class DeviceInactiveException : public std::exception {
 public:
  const char* what() const noexcept override { return "Device Inactive"; }
};

/// What a device shows of itself to conversations: whether one is in progress, and who waits.
class Busy {
 public:
  Busy() = default;
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

  /// Resumes everybody who still waits; each throws DeviceInactiveException from `wait_free` and
  /// must not touch the device after that.
  virtual ~Busy();

  /// The device can be talked to.
  virtual bool active() const = 0;

  bool busy() const { return busy_; }

  /// On release resumes waiters, first come first served, until one has taken the device. So a
  /// release may run much code, and the device may be gone when it returns.
  void set_busy(bool value);

  /// Suspends the running fiber until the device is free. Throws DeviceInactiveException when it is
  /// not active, now or after a wait. Needs no fiber when the device is active and free.
  void wait_free();

  /// False once the device is being destroyed; for those who may outlive it.
  std::shared_ptr<const bool> liveness() const { return alive_; }

 protected:
  /// Resumes everybody who waits, front first, and leaves the mark alone: a conversation that was
  /// cut off still holds it. To be called when the device has gone out of service.
  void wake_waiters();

 private:
  friend class BusyLock;

  std::deque<fiber*> waiters_;
  bool busy_ = false;
  /// False once the device is being destroyed; outlives it in the hands of waiters and holders.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

/// One conversation with a device at a time.
///
/// Construct on the stack; the device stays busy until the end of the scope, also when an exception
/// passes. Waiters are served in order of arrival. Does not nest: a second lock on the same device
/// from the same fiber never returns. A device that is destroyed meanwhile is left alone.
class BusyLock {
 public:
  /// With `wait`, suspends the running fiber until the device is free and throws
  /// DeviceInactiveException when it is not in service. Without, throws BusyException when the
  /// device is taken, whether in service or not, and needs no fiber.
  BusyLock(Busy* device, bool wait);
  virtual ~BusyLock();
  BusyLock(const BusyLock&) = delete;
  BusyLock& operator=(const BusyLock&) = delete;

 private:
  Busy* device_;
  std::shared_ptr<const bool> alive_;
};

}  // namespace zemblar

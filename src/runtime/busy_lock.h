#pragma once

#include <deque>
#include <exception>
#include <memory>

namespace zemblar {

class fiber;

/// A device is busy, and the caller did not ask to wait.
class BusyException : public std::exception {
 public:
  const char* what() const noexcept override { return "Device Busy"; }
};

/// A device is out of service or has been destroyed.
class DeviceInactiveException : public std::exception {
 public:
  const char* what() const noexcept override { return "Device Inactive"; }
};

/// The base of a device that holds one conversation at a time: whether one is in progress, and
/// which fibers wait.
class Busy {
 public:
  Busy() = default;
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

  /// Resumes all waiting fibers; in each, `wait_free` throws DeviceInactiveException. The fiber
  /// must not use the device after that.
  virtual ~Busy();

  /// True if the device is in service.
  virtual bool active() const = 0;

  bool busy() const { return busy_; }

  /// Marks the device as busy or free. Freeing it resumes waiting fibers, first come first served,
  /// until one has locked the device. So the call may run much code, and the device may be
  /// destroyed when it returns.
  void set_busy(bool value);

  /// Suspends the running fiber until the device is free. Throws DeviceInactiveException when the
  /// device is not active, now or after the wait. May be called without a fiber when the device is
  /// active and free.
  void wait_free();

  /// A flag that becomes false when the device is being destroyed, for code that may outlive the
  /// device.
  std::shared_ptr<const bool> liveness() const { return alive_; }

 protected:
  /// Resumes all waiting fibers, the first in line first. The device stays busy, because an
  /// interrupted conversation still has its lock. Call it when the device has gone out of service.
  void wake_waiters();

 private:
  friend class BusyLock;

  std::deque<fiber*> waiters_;
  bool busy_ = false;
  /// False once the device is being destroyed. Waiting fibers and BusyLocks share it, so it may
  /// outlive the device.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

/// One conversation with a device at a time.
///
/// Construct on the stack; the device stays busy until the end of the scope, also when an exception
/// passes. Waiting fibers are served in order of arrival. Does not nest: a second lock on the same
/// device from the same fiber never returns. The device may be destroyed during the lock.
class BusyLock {
 public:
  /// With `wait`, suspends the running fiber until the device is free; throws
  /// DeviceInactiveException when it is not in service. Without `wait`, throws BusyException when
  /// the device is busy, in service or not; this may be called without a fiber.
  BusyLock(Busy* device, bool wait);
  virtual ~BusyLock();
  BusyLock(const BusyLock&) = delete;
  BusyLock& operator=(const BusyLock&) = delete;

 private:
  Busy* device_;
  std::shared_ptr<const bool> alive_;
};

}  // namespace zemblar
